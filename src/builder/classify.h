// classify.h: decides from a path what belongs to a release, to which part of the world a scenery file belongs, for
// which system a file is meant, and by which key it is matched from one release to the next.
// Tests on a path are substring searches on the whole of it, so a folder's name counts as well as a file's.
#pragma once

#include <string>

// Top folders of the reference copy.
constexpr const char* ALL_str = "All";
constexpr const char* APL_str = "Macintosh";
constexpr const char* WIN_str = "Windows";
constexpr const char* LIN_str = "Linux";

// The first text in `path` that would decide over every file below it, by the tests of this module and of the walk.
// Empty where there is none.
std::string text_that_decides(const std::string& path);

// True if the file goes into the set and region in work. With `must_open` (and `list_mode` 0) a file that cannot be
// opened is refused; a link is not tried.
bool is_good_file(const std::string& path, int list_mode, int must_open);

// True if the tile for which the last component is named (its south-west corner, as "+40-120.dsf") lies in the region.
// Only the earth has regions here. A tile that is not on the globe is fatal; a name of fewer than three characters
// throws std::out_of_range.
bool want_reg(int region, const std::string& path);

// The `platform` of a row: 0 everyone, 1 Macintosh, 2 Windows, 3 Linux, 6 Linux among the common files.
// `rel` is the path below src_fold. Fatal for a file outside the four top folders.
int file_platform(const std::string& path, const std::string& rel);

// Replaces the top folder by the word of the platform. A file that moves to another top folder is a new file.
void chop_platform(std::string& path, int platform);
