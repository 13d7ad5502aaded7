// rate.h: how many bytes may be taken from the network now, so that all transfers together keep to a number of bytes a
// second that the user has set. What was not used is not saved up, but for a tenth of a second.
// Units: bytes, seconds of a clock that never goes back.
#pragma once

#include <cstdint>

struct rate_limit {
    int bytes_a_second = 0;  // the user's setting; 0: as fast as it goes
    int of_this_run = -1;    // what the command line says, and is not remembered; -1: nothing

    int now() const { return of_this_run >= 0 ? of_this_run : bytes_a_second; }
    std::int64_t allowance(double time);  // that may be read now; 0 for nothing worth a read
    void spend(std::int64_t bytes);
    double next_allowance(double time) const;  // seconds until there is one

  private:
    double saved = 0;     // bytes; below 0 where a read took more
    double counted = -1;  // when `saved` was last made up; -1: never
};

// "500k", "2M" or "65536" (k 1,000, M 1,000,000); 0 for no limit. False for anything else, and for more than fits an
// int.
bool read_rate(const char* text, int& bytes_a_second);
