// own_copy.h: a run of a copy of the test program in a folder of its own. What start-up does, and what an end of the
// process leaves behind, depends on the folder that the program lies in. The copy does a job instead of its tests.
#pragma once

#include <string>

#include "support/scratch.h"

class own_copy {
  public:
    // Made before main, as a global.
    struct job {
        job(const char* name, void (*act)());
    };
    struct outcome {
        int status;  // as of waitpid
        std::string out, err;
    };

    own_copy();
    outcome run(const std::string& job_name) const;

    scratch home;
    const std::string app = home / "app/";  // with the copy, "program"
    const std::string state = home / "state/";
};
