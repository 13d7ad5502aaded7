#include "runtime/oops.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <utility>

#include "platform/folders.h"
#include "platform/paths.h"
#include "platform/process.h"
#include "runtime/log.h"
#include "runtime/memory.h"
#include "runtime/product.h"

alert_front_t alert_front;
alert_road_t alert_road;

static bool in_alert = false;  // main thread only

exce_class::exce_class() : file("no exception"), line(0), level(t_exit) {}

exce_class::exce_class(std::string l1, std::string l2, std::string l3, std::string l4, const char* source_file,
                       int source_line, int alert_level)
    : line1(std::move(l1)),
      line2(std::move(l2)),
      line3(std::move(l3)),
      line4(std::move(l4)),
      file(source_file),
      line(source_line),
      level(alert_level) {}

static bool off_main_thread() {
    return alert_road.off_main_thread && alert_road.off_main_thread();
}

static bool log_only() {
    return alert_road.log_only && alert_road.log_only();
}

static void log_lines(const exce_class& e) {
    xer << e.line1 << "\n" << e.line2 << "\n" << e.line3 << "\n" << e.line4 << "\n";
}

void exce_class::Report() const {
    if (!off_main_thread()) {
        __MACIBM_alert(0, line1, line2, line3, line4, level, file, line);
        return;
    }
    xer << "EXCEPTION REPORTED FROM THREAD!!  File: " << file << ", line " << line << ".\n";
    log_lines(*this);
    xer.flush();
    app_done = 1;
    MACIBM_finishup(1);
}

void exce_class::LogAndContinue() const {
    xer << "Logging " << (level ? "fatal" : "non-fatal") << " Exception thrown from file: " << file << ", line " << line
        << ".\n";
    log_lines(*this);
    xer.flush();
}

void leave_process(int status) {
    if (alert_front.leave) alert_front.leave(status);
    std::exit(status);
}

static void write_to_stderr(const std::string& main_text, const std::string& secondary_text) {
    std::fprintf(stderr, "%s\n", main_text.c_str());
    if (secondary_text != " ") std::fprintf(stderr, "%s\n", secondary_text.c_str());
    std::fflush(stderr);
}

// The system's box takes two texts of the length of a path. An over-long one is a failure of its own, except inside
// another alert, where that failure would carry the same text round for ever.
static std::string native_text(const std::string& first, const std::string& second, bool recursive_error) {
    std::string text = first + " " + second;
    if (recursive_error)
        text.resize(std::min(text.size(), path_buffer_size - 1));
    else
        check_path_length(text);
    return text;
}

static void show(const exce_class& e, const std::string& place, int next_window, bool recursive_error) {
    if (e.line1.empty() && e.line2.empty() && e.line3.empty() && e.line4.empty()) return;
    if (alert_front.show && !recursive_error) {
        alert_front.show(e, place, next_window);
        return;
    }
    const std::string main_text = native_text(e.line1, e.line2, recursive_error);
    const std::string secondary_text = native_text(e.line3, e.line4, recursive_error);
    (alert_front.native ? alert_front.native : write_to_stderr)(main_text, secondary_text);
}

// Marks an alert that is under way. Left by an exception too, so that a caller who survives a fatal alert (a test) does
// not find every later one taken for an alert within an alert.
struct alert_mark {
    const bool before = std::exchange(in_alert, true);
    alert_mark() = default;
    alert_mark(const alert_mark&) = delete;
    alert_mark& operator=(const alert_mark&) = delete;
    ~alert_mark() { in_alert = before; }
};

static void alert_on_main_thread(const exce_class& e, int next_window) {
    const std::string place = std::string("(") + e.file + " line " + std::to_string(e.line) + ")";
    if (log_only()) {
        log_lines(e);
        xer << place << "\n" << std::flush;
        if (e.level == t_exit) leave_process(1);
        return;
    }

    const alert_mark mark;
    const bool recursive_error = mark.before;
    show(e, place, next_window, recursive_error);

    const bool fatal = e.level == t_exit || recursive_error;
    if (e.level == t_alert || fatal) {
        // An alert that comes again and again has nothing new to tell about the memory.
        static auto* const reported = new std::set<std::string>;  // places; also at the very end of the process
        if (reported->insert(place).second)
            dump_mem_stats(
                "This is the dump_mem_stats call from the following code: if(type==t_exit || type == t_alert || "
                "recursive_error)");
        xer << "\n";
        log_lines(e);
        xer << place << "\n" << std::flush;
    }
    if (!fatal) return;
    MACIBM_finishup(0);
    app_done = 1;
    leave_process(1);
}

void __MACIBM_alert(int next_window, const std::string& line1, const std::string& line2, const std::string& line3,
                    const std::string& line4, int type, const char* file, int line) {
    const exce_class e(line1, line2, line3, line4, file, line, type);
    if (off_main_thread())
        alert_road.send_to_main(e);
    else
        alert_on_main_thread(e, next_window);
}

void MACIBM_finishup(int save) {
    if (save && alert_front.save_settings && !log_only()) alert_front.save_settings();
    if (save && alert_road.stop_threads) alert_road.stop_threads();
    // A display is closed once, even if closing it fails with an alert; that one, and any later, has no screen.
    if (auto* const close_display = std::exchange(alert_front.close_display, nullptr)) {
        alert_front.show = nullptr;
        close_display(save);
    }
    remove_temp_folder();
    xer.close();
}

void check_path_length(const std::string& text) {
    if (text.size() >= path_buffer_size)
        __MACIBM_alert(0, "String too long!", text, "", "", t_exit, "HLutils/GenH/hl_string", 136);
}

void go_to_URL(const std::string& url) {
    check_path_length(url);
    open_in_browser(url);
}
