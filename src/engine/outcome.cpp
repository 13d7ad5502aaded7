#include "engine/outcome.h"

#include <cerrno>

#include "engine/stg.h"
#include "files/error_str.h"
#include "runtime/log.h"
#include "runtime/oops.h"

void log_action(const char* what, const std::string& path, int result) {
    if (stg.log_actions) xer << what << path << ", with result=" << result << ".\n";
}

void end_if_temp_is_full(int code) {
    if (code != ENOSPC && code != EDQUOT && code != EFBIG) return;
    __MACIBM_alert(0, error_str(err_temp_full) + "!", "What comes from the net is put there before it is installed.",
                   "Please make room there, or let TMPDIR name another folder, and start me again. The folder is:",
                   temp_path, t_exit, OOPS_PLACE);
}

void fail_install(const char* what, const std::string& error, const std::string& zip, const std::string& destination) {
    stg.install_failed = 1;
    __MACIBM_alert(0, what, "Error: " + error, zip, "Destination: " + destination, t_alert, OOPS_PLACE);
}
