#include "engine/front.h"

// What holds until a front end is up: nobody is there to agree, to decide or to look.
static int refuse() {
    return 0;
}
static changed_answer cancel(const std::string&, bool, const std::string&) {
    return changed_answer::cancel;
}
static void show_no_progress(float, float, float, scan_phase, const std::string&, const std::string&) {}
static void tell_no_one(int, const std::string&, int) {}
static void say_nothing() {}

front_t front = {refuse, cancel, show_no_progress, tell_no_one, say_nothing, say_nothing};
