#include "engine/outcome.h"

#include "engine/stg.h"
#include "runtime/log.h"
#include "runtime/oops.h"

void log_action(const char* what, const std::string& path, int result) {
    if (stg.log_actions) xer << what << path << ", with result=" << result << ".\n";
}

void fail_install(const char* what, const std::string& error, const std::string& zip, const std::string& destination) {
    stg.install_failed = 1;
    __MACIBM_alert(0, what, "Error: " + error, zip, "Destination: " + destination, t_alert, OOPS_PLACE);
}
