#include "app/start.h"

#include "app/dest.h"
#include "app/options.h"
#include "app/pref.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "platform/folders.h"
#include "runtime/log.h"

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
    // A person's own hand may have written it, in the file or behind --pref:.
    if (!dest_dir_path.empty()) dest_dir_path = folder_argument(dest_dir_path);
    if (const std::string named = path_option(argc, argv); !named.empty())
        dest_dir_path = named;
    else if (stg.always_ask_dir)
        pick_dest_path();
}
