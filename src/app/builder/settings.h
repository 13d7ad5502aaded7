// settings.h: what a run of the builder is told: options, and for what they leave open "builder.conf", which lies
// beside the reference copy, in the folder that holds it.
// Form of that file: lines of a key, a blank and a value to the end of the line; "#" begins a line of comment. Keys are
// dst, old, version_number and version_name. A relative path starts from the folder of the file.
#pragma once

#include <string>

#include "app/options.h"

extern const option_table builder_options;

// Sets the first block of region.h. False when the builder was called wrongly; `complaint` then says how, in one line.
bool read_builder_settings(std::string& complaint);
