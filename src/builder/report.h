// report.h: what the builder tells whoever runs it, and the one thing that it asks: whether to stop.
#pragma once

#include <cstdint>
#include <string>

#include "builder/region.h"

struct release_summary {
    std::string name, folder;
    int files = 0;
    tally_t tally;
    int hidden = 0;           // items of the reference copy that were left out because they are hidden
    std::uint64_t bytes = 0;  // of the zips
};

// Whether whoever runs the builder wants it to stop: with q, or by a signal such as Ctrl-C.
enum class stop_wish { none, by_q, by_signal };

struct builder_front_t {
    // After every file; whoever shows it paces it. `share` 0 to 1, negative while the end is not known.
    void (*progress)(const std::string& line1, const std::string& line2, float share);
    // Asked with every file.
    stop_wish (*stop_wanted)();
    // The history was read: how many files it has, and the newest number of a release in it.
    void (*history)(int files, int newest);
    // A region stands complete under its own name.
    void (*finished)(const release_summary& summary);
};
extern builder_front_t builder_front;  // defaults: nothing is shown, nothing stops

void report_walk(const std::string& source);
void report_compression(const std::string& zip);

// Ends the run if the user wants it to stop.
void check_stop();
