#include "builder/report.h"

#include "runtime/oops.h"

builder_front_t builder_front = {
    [](const std::string&, const std::string&, float) {},
    [] { return stop_wish::none; },
    [](int, int) {},
    [](const release_summary&) {},
};

// Whoever waits for hours wants to see numbers that move.
static std::string counts(const char* first_label, int first, const char* second_label, int second) {
    return "reg: " + std::to_string(build.reg) + first_label + std::to_string(first) + second_label +
           std::to_string(second) + ".";
}

void report_walk(const std::string& source) {
    builder_front.progress(
        counts(": total files recursed: ", build.num_files_rec, ". will compress: ", build.num_files_use), source, -1);
    check_stop();
}

void report_compression(const std::string& zip) {
    const float share =
        build.num_files_use ? static_cast<float>(build.num_files_com) / static_cast<float>(build.num_files_use) : 1;
    builder_front.progress(
        counts(": total files to compress: ", build.num_files_use, ". now doing: ", build.num_files_com), zip, share);
    check_stop();
}

void check_stop() {
    const stop_wish wish = builder_front.stop_wanted();
    if (wish == stop_wish::by_q) build_fatal("You hit Q dumbass!", "", "", "", 173);
    if (wish == stop_wish::by_signal)
        __MACIBM_alert(0, "The build was interrupted.", "No release was made.",
                       "What is half done is swept away by the next run.", "", t_exit, OOPS_PLACE);
}
