#include "app/window/window.h"

#include <cstdio>
#include <string>
#include <vector>

#include "app/dest.h"
#include "app/exit_status.h"
#include "app/options.h"
#include "app/pref.h"
#include "app/start.h"
#include "app/window/folder_chooser.h"
#include "app/window/main_screen.h"
#include "app/window/prefs.h"
#include "app/window/questions.h"
#include "app/window/sprites.h"
#include "engine/flow.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "runtime/cmdline.h"
#include "runtime/oops.h"
#include "shell/pump.h"
#include "shell/shell.h"

static int wrong_usage(const std::string& problem) {
    std::fprintf(stderr, "%s\n", problem.c_str());
    MACIBM_finishup(0);
    return status_usage;
}

static void tell_busy() {
    __MACIBM_alert(0, "Another copy of this program is at work on this folder:", dest_dir_path, "Nothing was changed.",
                   "Try again when it has ended.", t_alert, OOPS_PLACE);
}

int window_main(int argc, char* const* argv) {
    const std::vector<wrong_option> wrong = wrong_options(argc, argv, installer_options);
    for (const wrong_option& one : wrong)
        std::fprintf(stderr, "%s\n", one.problem.c_str());
    alert_front.save_settings = [] { pref.IO_set(pref_installer, scan_write); };
    shell_hooks.update = APP_update;
    shell_hooks.is_working = [] {
        return stg.install_state == install_running || stg.dir_state == dir_fetching || stg.dir_state == dir_unread;
    };
    shell_hooks.backdrop = main_screen_backdrop;
    shell_hooks.may_use_max_cpu = [] { return stg.use_max_cpu; };
    MACIBM_init(argc, argv);
    set_window_icon();
    // Nobody may be at the terminal: the window goes on without what it does not understand.
    for (const wrong_option& one : wrong)
        cmdline.forget(one.name);
    choose_folder = choose_folder_in_window;
    front.handle_EULA = handle_EULA;
    front.select_alert = select_alert;
    front.dir_progress_bar = dir_progress_bar;
    front.destination_busy = tell_busy;

    std::string list_host, problem;
    int target_os = platform_os;
    if (!list_host_option(list_host, problem) || !target_os_option(target_os, problem) || !limit_rate_option(problem) ||
        !scale_option(problem) || !trust_options(problem))
        return wrong_usage(problem);
    app_start(argc, argv);
    if (!cmdline.has_option("--scale") && window_scale != 0) MACIBM_set_scale(wanted_scale());
    flow.list_host = list_host;
    stg.target_os = target_os;
    while (!app_done)
        MACIBM_event_proc();
    MACIBM_finishup(1);
    return 0;
}
