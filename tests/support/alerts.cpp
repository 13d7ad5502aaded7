#include "support/alerts.h"

#include "runtime/memory.h"

static alert_catcher* current = nullptr;

static void keep(const exce_class& alert, const std::string&, int) {
    current->seen.push_back(alert);
}

alert_catcher::alert_catcher() : before(alert_front) {
    current = this;
    alert_front = alert_front_t{};
    mem_report_without_folder = mem_report_place::nowhere;
    alert_front.show = keep;
    alert_front.leave = [](int status) { throw left{status}; };
}

alert_catcher::~alert_catcher() {
    alert_front = before;
    mem_report_without_folder = mem_report_place::standard_output;
    current = nullptr;
}

std::string alert_catcher::last() const {
    if (seen.empty()) return {};
    const exce_class& a = seen.back();
    return a.line1 + "\n" + a.line2 + "\n" + a.line3 + "\n" + a.line4 + "\n(" + a.file + " line " +
           std::to_string(a.line) + ")";
}
