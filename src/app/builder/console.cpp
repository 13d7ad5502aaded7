#include "app/builder/console.h"

#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "app/exit_status.h"
#include "app/progress_line.h"
#include "builder/report.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "platform/interrupt.h"
#include "runtime/oops.h"
#include "runtime/utf8.h"
#include "runtime/xtim.h"

namespace {

struct {
    progress_line progress;
    bool interrupted = false;  // by Ctrl-C or a signal, and not by q
} face;

void show_progress(const std::string& line1, const std::string& line2, float share) {
    face.progress.show(share, line1, line2, xtim_class::seconds());
}

stop_wish stop_wanted() {
    face.interrupted = interrupt_requested() != 0;
    if (face.interrupted) return stop_wish::by_signal;
    return terminal_key_pressed('q') ? stop_wish::by_q : stop_wish::none;
}

void show_scan(float lo, float value, float hi, scan_phase, const std::string& label, const std::string& item) {
    // The history is read in the run's own temporary folder, which is nobody's concern.
    const std::string shown = item.starts_with(temp_path) ? item.substr(temp_path.size()) : item;
    show_progress(label, shown, hi > lo ? (value - lo) / (hi - lo) : 0);
    check_stop();
}

void show_history(int files, int newest) {
    face.progress.clear();
    std::printf("The history has %d files, the newest of release %d.\n", files, newest);
    std::fflush(stdout);
}

void show_summary(const release_summary& done) {
    face.progress.clear();
    const bool small = done.bytes < 1000;
    std::printf("%s: %d files (%d new, %d changed, %d as before), %" PRIu64 " %s; %d withdrawn\n", done.name.c_str(),
                done.files, done.tally.added, done.tally.changed, done.tally.same,
                (small ? done.bytes : done.bytes / 1000), small ? "bytes" : "kB", done.tally.withdrawn);
    if (done.hidden > 0) std::printf("hidden items left out: %d\n", done.hidden);
    std::printf("%s\n", done.folder.c_str());
    std::fflush(stdout);
}

// Names of files reach a terminal in what it says; none may steer it.
void show_alert(const exce_class& alert, const std::string& place, int) {
    face.progress.clear();
    for (const std::string* line : {&alert.line1, &alert.line2, &alert.line3, &alert.line4, &place})
        std::fprintf(stderr, "%s\n", printable(*line).c_str());
}

void leave(int status) {
    std::exit(face.interrupted ? status_signal + interrupt_requested() : status);
}

}  // namespace

void builder_console_open() {
    face.progress.open(stdout, isatty(STDOUT_FILENO) != 0);
    alert_front.show = show_alert;
    alert_front.close_display = [](int) { builder_console_close(); };
    alert_front.leave = leave;
    front.dir_progress_bar = show_scan;
    builder_front = {show_progress, stop_wanted, show_history, show_summary};
    watch_terminal_keys();
}

void builder_console_close() {
    face.progress.clear();
    restore_terminal();
}

void builder_problem(const std::string& text) {
    face.progress.clear();
    std::fprintf(stderr, "%s\n", printable(text).c_str());
}
