#include "runtime/startup.h"

#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <numbers>

#include "platform/folders.h"
#include "platform/process.h"
#include "runtime/cmdline.h"
#include "runtime/debug.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/thread.h"

float randrat[10000];
float lookup_sin[361], lookup_cos[361];

std::string start_temp_folder() {
    std::string folder;
    get_OS_abs_path(os_dir_temp, &folder);
    if (folder.empty())
        __MACIBM_alert(
            0, "I can not make a temporary folder!",
            "What comes from the net is put there before it is installed, so I have to stop.",
            "Please make sure that there is space and that I may write in the folder that TMPDIR names, or in",
            system_temp_folder, t_exit, OOPS_PLACE);
    if (const std::string refused = temp_folder_refused(); !refused.empty())
        xer << "The temporary folder that TMPDIR names cannot be used: " << refused << ". I use " << folder
            << " instead.\n";
    return folder;
}

double random_unit() {
    return std::rand() * 4.656613e-10;
}

void runtime_start(int argc, char* const* argv) {
    // First what a failure of all the rest needs: the report of a crash, descriptors that are none of ours, the log.
    UTL_debug_init();
    open_standard_descriptors();
    if (is_dvd) g_case_sensitive = 0;  // discs are read on systems that ignore the case
    open_log();

    // The table of random numbers from a fixed seed; what is drawn later is to differ from run to run.
    std::srand(1);
    for (float& entry : randrat)
        entry = static_cast<float>(random_unit() * 0.9999);
    const auto since_epoch = std::chrono::system_clock::now().time_since_epoch();
    const auto seed =
        static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::microseconds>(since_epoch).count());
    std::srand(seed);
    for (std::uint32_t i = 0; i < seed % 1000; ++i)
        std::rand();
    for (int degree = 0; degree <= 360; ++degree) {
        lookup_sin[degree] = static_cast<float>(std::sin(degree * std::numbers::pi / 180));
        lookup_cos[degree] = static_cast<float>(std::cos(degree * std::numbers::pi / 180));
    }

    // The options may end the process, and are to stand in the log below its head. Alerts of other threads need both.
    write_log_header();
    cmdline.init_unix(argc, argv);
    THREAD_init();
}
