// oops.h: the one way in which a problem reaches the user, from any thread and at any time, and the orderly end.
//
// An alert is four lines of text and the source place of the call; the place is the failure's lasting name, by which
// support finds it across releases. How it is shown is turned round: the front end (window or console) fills in
// `alert_front`; before that, the native form writes to standard error. What stands above the alerts and is needed for
// them, the threads and the command line, fills `alert_road` in the same way.
// Threads: any thread may raise one; off the main thread it travels there as an exce_class (thread.h).
// Exceptions: with the default `leave` a fatal alert does not return. Nothing on the way may be noexcept.
#pragma once

#include <string>

enum { t_alert = 1, t_exit = 2 };  // level 1: acknowledge and go on; level 2: the process ends with status 1

// This source file relative to the root of the project and the line, for calls that have no lasting place of their own.
#define OOPS_PLACE __FILE__, __LINE__

class exce_class {
  public:
    exce_class();  // empty lines, file "no exception", level 2
    exce_class(std::string line1, std::string line2, std::string line3, std::string line4, const char* file, int line,
               int level);
    exce_class(const exce_class&) = default;
    exce_class& operator=(const exce_class&) = default;
    virtual ~exce_class() = default;

    void MakeFatal() { level = t_exit; }
    void Report() const;  // shows it on the main thread; logs it and ends the run elsewhere
    void LogAndContinue() const;

    std::string line1, line2, line3, line4;
    const char* file;  // not owned
    int line;
    int level;
};

struct alert_front_t {
    // The front end's own form: returns when the user has acknowledged. `place` is "(file line N)".
    // Null until the front end is up; then the native form is used.
    void (*show)(const exce_class& alert, const std::string& place, int next_window);
    // A message box of the system; blocks until it is closed. The default writes both texts to standard error.
    void (*native)(const std::string& main_text, const std::string& secondary_text);
    void (*save_settings)();  // preferences and keys, at an orderly end; may be null
    // Windows, terminal; may be null. Called once: from then on `show` is null too, as nothing is left to draw on.
    void (*close_display)(int save);
    void (*leave)(int status);  // ends the process; std::exit by default. A test may throw from it.
};
extern alert_front_t alert_front;

// Null members mean a process with one thread and without options, as it is before the start and in most tests.
struct alert_road_t {
    bool (*off_main_thread)();                  // thread.h; set while there are threads of ours
    void (*send_to_main)(const exce_class& e);  // ends the calling thread if `e` is fatal
    void (*stop_threads)();                     // joins them
    bool (*log_only)();                         // cmdline.h: no screen is used and nothing is saved
};
extern alert_road_t alert_road;

void __MACIBM_alert(int next_window, const std::string& line1, const std::string& line2, const std::string& line3,
                    const std::string& line4, int type, const char* file, int line);

// The orderly end. With `save`: settings are written (not with --fps_test) and the workers are joined. In both cases
// the display is closed, the private temporary folder removed and the log closed; later log lines go nowhere.
void MACIBM_finishup(int save);

// Ends the process by the front end's `leave`, with no closing of anything: the end of --help, and the last step of a
// fatal alert.
[[noreturn]] void leave_process(int status);

// Over 499 characters is the fatal alert "String too long!": every path is at home in a buffer of path_buffer_size.
void check_path_length(const std::string& text);

// Hands a web address to the system and ignores the outcome. Over 499 characters is a fatal alert.
void go_to_URL(const std::string& url);
