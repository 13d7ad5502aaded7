#include "app/window.h"

#include <cstdio>
#include <string>

#include "app/console_options.h"
#include "app/dest.h"
#include "app/pref.h"
#include "app/start.h"
#include "app/window_screen.h"
#include "engine/flow.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "platform/folder_dialog.h"
#include "runtime/cmdline.h"
#include "runtime/oops.h"
#include "shell/pump.h"
#include "shell/shell.h"

static int wrong_usage(const std::string& problem) {
    std::fprintf(stderr, "%s\n", problem.c_str());
    MACIBM_finishup(0);
    return 2;
}

static int ask_for_folder(const std::string& message, const std::string&, const std::string& start,
                          std::string& chosen) {
    const folder_dialog_result result = run_folder_dialog(message, start, chosen, nullptr);
    if (result == folder_dialog_result::no_helper)
        __MACIBM_alert(0, "There is no folder dialog on this system!",
                       "Install zenity or kdialog, or name the folder when you start the program:",
                       "velaris-installer -path FOLDER", "", t_alert, OOPS_PLACE);
    return result == folder_dialog_result::chosen;
}

int window_main(int argc, char* const* argv) {
    cmdline_own_usage = installer_usage;
    alert_front.save_settings = [] { pref.IO_set(pref_installer, scan_write); };
    shell_hooks.update = APP_update;
    MACIBM_init(argc, argv);
    choose_folder = ask_for_folder;
    front.dir_progress_bar = dir_progress_bar;

    std::string list_host, problem;
    int target_os = platform_os;
    if (!list_host_option(list_host, problem) || !target_os_option(target_os, problem)) return wrong_usage(problem);
    app_start(argc, argv);
    flow.list_host = list_host;
    stg.target_os = target_os;
    while (!app_done)
        MACIBM_event_proc();
    MACIBM_finishup(1);
    return 0;
}
