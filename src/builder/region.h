// region.h: the record of a build: what the run was told, and the region in work. A set of scenery is built region by
// region, everything else is region 0.
// Lifetimes: the first block is set once, before build_install; the second is reset for every region.
// Threads: main thread only.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

// What the run was told. Folders end in "/".
extern std::string old_dir_path;   // catalogue of the previous release: its text, or the zip that carried it
extern int first_release;          // there is no previous release, and that is meant
extern std::string src_fold;       // the reference copy
extern std::string dst_fold_base;  // folder in which the releases lie
extern std::string release_name;   // name of region 0 and of its folder
extern int release_number;         // goes into every row that this run writes for a file

// The region in work.
extern int reg;
extern std::string sim_name;                             // its name; "-" at start
extern std::string dst_folder;                           // copy of dst_fold_base
extern std::string prev_dir;                             // folder last written to the catalogue; "---" before the first
extern std::vector<std::string> comp_files;              // full paths that the walk chose, in its order
extern std::set<std::string> comp_paths;                 // output folders that they need
extern std::map<std::string, int> sim_info_index;        // key of a file -> its place in sim_info
extern int num_files_rec, num_files_use, num_files_com;  // seen, chosen, compressed
extern double zip_size_ins;                              // sum of the zips, gigabytes of 10^9 bytes

// How the files of a region stand to those of the previous release.
struct tally_t {
    int added = 0, changed = 0, same = 0;
    int withdrawn = 0;  // in this release; those of earlier ones are not counted again
};
extern tally_t tally;

void reset_region();

std::string region_name(int region);

// A region is built under a name that no one takes for a release, and gets its own name at the very end.
std::string unfinished_name(int region);
std::string output_folder();  // of the region in work, while it is built

// A blunt end of the run; `line` is the failure's lasting name within the builder.
void build_fatal(const std::string& line1, const std::string& line2, const std::string& line3, const std::string& line4,
                 int line);
