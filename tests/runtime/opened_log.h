// opened_log.h: the log in a private folder for one test.
#pragma once

#include <string>

#include "runtime/log.h"
#include "support/scratch.h"

struct opened_log {
    opened_log() {
        xer.open(path);
        xer << std::fixed;
    }
    ~opened_log() { xer.close(); }
    opened_log(const opened_log&) = delete;
    opened_log& operator=(const opened_log&) = delete;
    std::string text() const {
        if (xer.is_open()) xer.flush();
        return scratch::read(path);
    }

    scratch folder;
    const std::string path = folder / "Log.txt";
};
