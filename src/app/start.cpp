#include "app/start.h"

#include <unistd.h>

#include <climits>
#include <cstring>

#include "app/dest.h"
#include "app/pref.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "platform/folders.h"
#include "runtime/log.h"

// The folder as the user sees it: from the current folder where it is relative, and with its "/".
static std::string folder_argument(const char* text) {
    std::string path = text;
    if (path.empty()) return path;
    char here[PATH_MAX];
    if (path[0] != '/' && getcwd(here, sizeof here)) path = std::string(here) + "/" + path;
    if (path.back() != '/') path += "/";
    return path;
}

void app_start(int argc, char* const* argv) {
    // For whoever reads the log: where things lie on this machine.
    const struct {
        const char* label;
        int which;
    } folders[] = {{"os_dir_this_app\t\t=", os_dir_this_app},
                   {"os_dir_desktop\t\t=", os_dir_desktop},
                   {"os_dir_default_apps\t=", os_dir_default_apps},
                   {"os_dir_temp\t\t\t=", os_dir_temp},
                   {"os_dir_prefs\t\t\t=", os_dir_prefs}};
    for (const auto& folder : folders) {
        std::string path;
        get_OS_abs_path(folder.which, &path);
        xer << folder.label << path << '\n';
    }
    xer << '\n';

    dest_dir_path = default_destination();
    xer << "dest_dir_path=" << dest_dir_path << '\n';
    flow_start();
    pref.IO_set(pref_installer, scan_read);
    if (argc > 2 && std::strcmp(argv[1], "-path") == 0)
        dest_dir_path = folder_argument(argv[2]);
    else if (stg.always_ask_dir)
        pick_dest_path();
}
