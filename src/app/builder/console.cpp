#include "app/builder/console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "builder/report.h"
#include "engine/front.h"
#include "platform/interrupt.h"
#include "runtime/oops.h"
#include "runtime/xtim.h"

namespace {

constexpr int bar_width = 10;

// What the terminal shows. Process-wide, main thread only.
struct display_t {
    bool in_place = false;
    bool drawn = false;
    double last_time = -1;  // of the last line; -1: none yet
    float last_share = 0;
    bool interrupted = false;
};
display_t display;

double seconds_now() {
    return static_cast<double>(xtim_class::microsecs()) * 1e-6;
}

void clear_progress() {
    if (!display.drawn) return;
    std::fputs("\r\033[K\033[1A\r\033[K", stdout);
    std::fflush(stdout);
    display.drawn = false;
}

// A line that wraps would not be redrawn in place.
std::size_t columns() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 20) return size.ws_col - 1u;
    return 79;
}

// The end of a path tells more than its start. A control byte in a name must not reach the terminal, and a UTF-8
// sequence is not cut.
std::string one_line(std::string text) {
    const std::size_t room = columns();
    if (text.size() > room) {
        std::size_t from = text.size() - (room - 3);
        while (from < text.size() && (static_cast<unsigned char>(text[from]) & 0xc0) == 0x80)
            ++from;
        text = "..." + text.substr(from);
    }
    std::replace_if(
        text.begin(), text.end(), [](char c) { return (c & ~31) == 0 || c == 127; }, '?');
    return text;
}

std::string bar(float share) {
    if (share < 0) return {};
    const auto filled = static_cast<std::size_t>(std::clamp(share, 0.0f, 1.0f) * bar_width);
    return "[" + std::string(filled, '#') + std::string(bar_width - filled, '.') + "] ";
}

void draw_in_place(const std::string& line1, const std::string& line2, float share) {
    if (display.drawn) std::fputs("\033[1A", stdout);
    std::printf("\r\033[K%s\n\033[K%s", one_line(bar(share) + line1).c_str(), one_line(line2).c_str());
    display.drawn = true;
}

void show_progress(const std::string& line1, const std::string& line2, float share) {
    const double now = seconds_now();
    const double age = now - display.last_time;
    const bool first = display.last_time < 0;
    if (display.in_place) {
        if (!first && age < 0.1) return;
        draw_in_place(line1, line2, share);
    } else {
        const bool moved = share - display.last_share >= 0.05f || share < display.last_share;
        if (!first && age < 5 && !moved) return;
        std::printf("%s %s\n", line1.c_str(), line2.c_str());
    }
    std::fflush(stdout);
    display.last_time = now;
    display.last_share = share;
}

bool stop_wanted() {
    display.interrupted = interrupt_requested() != 0;
    return display.interrupted || terminal_key_pressed('q');
}

void show_scan(float lo, float value, float hi, int, const std::string& label, const std::string& item) {
    show_progress(label, item, hi > lo ? (value - lo) / (hi - lo) : 0);
    check_stop();
}

void show_left_out(const std::string& path) {
    builder_problem("left out, because it cannot be read as a file: " + path);
}

void show_summary(const release_summary& done) {
    clear_progress();
    std::printf("%s: %d files (%d new, %d changed, %d as before), %lld kB; %d withdrawn\n%s\n", done.name.c_str(),
                done.files, done.added, done.changed, done.same, std::llround(done.kilobytes), done.withdrawn,
                done.folder.c_str());
    std::fflush(stdout);
}

void show_alert(const exce_class& alert, const std::string& place, int) {
    clear_progress();
    std::fprintf(stderr, "%s\n%s\n%s\n%s\n%s\n", alert.line1.c_str(), alert.line2.c_str(), alert.line3.c_str(),
                 alert.line4.c_str(), place.c_str());
}

void leave(int status) {
    std::exit(display.interrupted ? 130 : status);
}

}  // namespace

void builder_console_open() {
    display = display_t{};
    display.in_place = isatty(STDOUT_FILENO) != 0;
    alert_front.show = show_alert;
    alert_front.close_display = [](int) { builder_console_close(); };
    alert_front.leave = leave;
    front.dir_progress_bar = show_scan;
    builder_front = {show_progress, stop_wanted, show_left_out, show_summary};
    watch_terminal_keys();
}

void builder_console_close() {
    clear_progress();
    restore_terminal();
}

void builder_problem(const std::string& text) {
    clear_progress();
    std::fprintf(stderr, "%s\n", text.c_str());
}
