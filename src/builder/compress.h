// compress.h: turns one file of the reference copy into its zip and its rows of the catalogue.
#pragma once

#include <string>

// `path` is a full path below src_fold; the folder for its zip is there, and `ouf` is open on the catalogue. A Windows
// program is made large-address-aware first, in the reference copy itself.
void comp_file(const std::string& path);
