#include "app/builder/console.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "app/exit_status.h"
#include "app/progress_line.h"
#include "builder/report.h"
#include "engine/front.h"
#include "platform/interrupt.h"
#include "runtime/oops.h"
#include "runtime/xtim.h"

namespace {

struct {
    progress_line progress;
    bool interrupted = false;  // by Ctrl-C or a signal, and not by q
} face;

void show_progress(const std::string& line1, const std::string& line2, float share) {
    face.progress.show(static_cast<double>(share), line1, line2, xtim_class::seconds());
}

bool stop_wanted() {
    face.interrupted = interrupt_requested() != 0;
    return face.interrupted || terminal_key_pressed('q');
}

void show_scan(float lo, float value, float hi, scan_phase, const std::string& label, const std::string& item) {
    show_progress(label, item, hi > lo ? (value - lo) / (hi - lo) : 0);
    check_stop();
}

void show_left_out(const std::string& path) {
    builder_problem("left out, because it cannot be read as a file: " + path);
}

void show_summary(const release_summary& done) {
    face.progress.clear();
    std::printf("%s: %d files (%d new, %d changed, %d as before), %lld kB; %d withdrawn\n%s\n", done.name.c_str(),
                done.files, done.tally.added, done.tally.changed, done.tally.same, std::llround(done.kilobytes),
                done.tally.withdrawn, done.folder.c_str());
    std::fflush(stdout);
}

void show_alert(const exce_class& alert, const std::string& place, int) {
    face.progress.clear();
    std::fprintf(stderr, "%s\n%s\n%s\n%s\n%s\n", alert.line1.c_str(), alert.line2.c_str(), alert.line3.c_str(),
                 alert.line4.c_str(), place.c_str());
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
    builder_front = {show_progress, stop_wanted, show_left_out, show_summary};
    watch_terminal_keys();
}

void builder_console_close() {
    face.progress.clear();
    restore_terminal();
}

void builder_problem(const std::string& text) {
    face.progress.clear();
    std::fprintf(stderr, "%s\n", text.c_str());
}
