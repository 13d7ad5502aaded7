// The builder: settings, the lock on the output, the build.
#include <exception>
#include <string>

#include "app/builder/console.h"
#include "app/builder/settings.h"
#include "app/exit_status.h"
#include "builder/build.h"
#include "builder/region.h"
#include "engine/stg.h"
#include "platform/folder_lock.h"
#include "platform/interrupt.h"
#include "runtime/cmdline.h"
#include "runtime/oops.h"
#include "runtime/startup.h"
#include "runtime/thread.h"

static int wrong_usage(const std::string& problem) {
    builder_problem("velaris-builder: " + problem + " (--help tells more)");
    return status_usage;
}

static int run() {
    std::string complaint;
    if (!read_builder_settings(complaint)) return wrong_usage(complaint);
    // A second run would sweep away what the first one has half done.
    if (lock_folder(build.dst_fold_base) == folder_lock_result::busy) {
        builder_problem("velaris-builder: another run is at work on " + build.dst_fold_base);
        return status_busy;
    }
    catch_interrupts();
    THREAD_make_workers();
    builder_console_open();
    try {
        build_install();
    } catch (const std::exception& e) {
        // A scenery file with a name too short to name a tile ends here.
        builder_problem("velaris-builder: the build failed (" + std::string(e.what()) + ") at " + crnt_file_path);
        return status_failed;
    }
    return status_complete;
}

int main(int argc, char** argv) {
    // A misspelled option would be without effect, which in a release is found out too late.
    if (const auto wrong = wrong_options(argc, argv, builder_options); !wrong.empty() && !only_informs(argc, argv))
        return wrong_usage(wrong.front().problem);
    const std::string usage = usage_text(builder_options);
    cmdline_own_usage = usage.c_str();
    runtime_start(argc, argv);
    const int status = run();
    MACIBM_finishup(1);
    return status;
}
