// report.h: what the builder tells whoever runs it, and the one thing that it asks: whether to stop.
#pragma once

#include <string>

#include "builder/region.h"

struct release_summary {
    std::string name, folder;
    int files = 0;
    tally_t tally;
    double kilobytes = 0;  // of the zips; kilobytes of 1000 bytes
};

struct builder_front_t {
    // After every file; whoever shows it paces it. `share` 0 to 1, negative while the end is not known.
    void (*progress)(const std::string& line1, const std::string& line2, float share);
    // Asked with every file.
    bool (*stop_wanted)();
    // An item of the reference copy that belongs to the release but cannot be read; the release goes without it.
    void (*left_out)(const std::string& path);
    // A region stands complete under its own name.
    void (*finished)(const release_summary& summary);
};
extern builder_front_t builder_front;  // defaults: nothing is shown, nothing stops

void report_walk(const std::string& source);
void report_compression(const std::string& zip);

// Ends the run if the user wants it to stop.
void check_stop();
