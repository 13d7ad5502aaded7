// options.h: the command line of one test, in the place of what was there.
#pragma once

#include <string>
#include <vector>

#include "runtime/cmdline.h"

inline void use_options(std::vector<std::string> words) {
    std::vector<char*> argv{nullptr};
    for (std::string& word : words)
        argv.push_back(word.data());
    cmdline.clear();
    cmdline.init_unix(static_cast<int>(argv.size()), argv.data());
}
