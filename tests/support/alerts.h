// alerts.h: lets a test see alerts. While one of these lives, alerts are kept instead of shown, and a fatal one throws
// `left` instead of ending the process.
#pragma once

#include <string>
#include <vector>

#include "runtime/oops.h"

struct left {
    int status;
};

class alert_catcher {
  public:
    alert_catcher();
    ~alert_catcher();
    alert_catcher(const alert_catcher&) = delete;
    alert_catcher& operator=(const alert_catcher&) = delete;

    std::vector<exce_class> seen;
    std::size_t count() const { return seen.size(); }
    // All lines and the place of the last alert in one text; empty when there was none.
    std::string last() const;

  private:
    alert_front_t before;
};
