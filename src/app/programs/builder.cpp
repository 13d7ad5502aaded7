// The builder: settings, the lock on the output, the build.
#include <exception>
#include <string>

#include "app/builder/console.h"
#include "app/exit_status.h"
#include "builder/build.h"
#include "builder/region.h"
#include "builder/settings.h"
#include "engine/stg.h"
#include "platform/folder_lock.h"
#include "platform/interrupt.h"
#include "runtime/cmdline.h"
#include "runtime/oops.h"
#include "runtime/startup.h"

static int run(int argc, char** argv) {
    std::string complaint;
    if (!read_builder_settings(argc, argv, complaint)) {
        builder_problem("velaris-builder: " + complaint + " (--help tells more)");
        return status_usage;
    }
    // A second run would sweep away what the first one has half done.
    if (lock_folder(build.dst_fold_base) == folder_lock_result::busy) {
        builder_problem("velaris-builder: another run is at work on " + build.dst_fold_base);
        return status_busy;
    }
    catch_interrupts();
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
    cmdline_own_usage = builder_usage;
    runtime_start(argc, argv);
    const int status = run(argc, argv);
    MACIBM_finishup(1);
    return status;
}
