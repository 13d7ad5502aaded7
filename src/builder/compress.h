// compress.h: turns one file of the reference copy into its zip and its rows of the catalogue.
#pragma once

#include <string>

#include <vector>

// Makes the zips of all `paths`, full ones below src_fold, and writes their rows in this order. The folders for the
// zips are there, and `ouf` is open on the catalogue. The zips are made by the pool, as many at a time as `build.jobs`
// says; what is written does not depend on it. A Windows program is made large-address-aware first, in the reference
// copy itself.
void comp_files(const std::vector<std::string>& paths);
