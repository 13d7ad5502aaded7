// region.h: the record of a build: what the run was told, and the region in work. A set of scenery is built region by
// region, everything else is region 0.
// Threads: main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "runtime/product.h"

// How the files of a region stand to those of the previous release.
struct tally_t {
    int added = 0, changed = 0, same = 0;
    int withdrawn = 0;  // in this release; those of earlier ones are not counted again
};

// Set once, before build_install. Folders end in "/".
struct build_orders {
    std::string old_dir_path;             // catalogue of the previous release: its text, or the zip that carried it
    int first_release = 0;                // there is no previous release, and that is meant
    std::string src_fold;                 // the reference copy
    std::string dst_fold_base;            // folder in which the releases lie
    std::string release_name;             // name of region 0 and of its folder
    int jobs = 0;                         // zips made at a time; 0: one for each processor
    int release_number = version_number;  // goes into every row that this run writes for a file
};

// Where a chosen file, or a folder with chosen files, is installed.
struct installed_at {
    std::string rel;  // path below the reference copy, top folder first
    int system;       // 0 all, 1 Macintosh, 2 Windows, 3 Linux
    bool is_file;
};

// Set anew by begin_region, and filled as the work on the region goes on.
struct build_region {
    int reg = 0;
    std::string sim_name = "-";           // the region's name
    std::string dst_folder;               // copy of dst_fold_base
    std::string prev_dir = "---";         // folder last written to the catalogue; "---" before the first
    std::vector<std::string> comp_files;  // full paths that the walk chose, in its order
    std::set<std::string> comp_paths;     // output folders that they need
    std::unordered_multimap<std::string, installed_at> installed;  // by the installed path, its case taken out
    std::map<std::string, std::size_t> sim_info_index;             // key of a file -> its place in sim_info
    int num_hidden = 0;  // hidden items, which are left out with all that is in them
    int num_files_rec = 0, num_files_use = 0, num_files_com = 0;  // seen, chosen, compressed
    double zip_size_ins = 0;      // sum of the zips, gigabytes of 10^9 bytes, each cut to kilobytes
    std::uint64_t zip_bytes = 0;  // the same to the byte
    tally_t tally;
};

// The one record of a build: parted so that a new region can be begun by one assignment.
struct build_t : build_orders, build_region {};
extern build_t build;

void begin_region(int region);  // sim_info is empty then too

std::string region_name(int region);

// A region is built under a name that no one takes for a release, and gets its own name at the very end.
constexpr const char* unfinished_ending = ".unfinished";
std::string unfinished_name(int region);
std::string output_folder();  // of the region in work, while it is built

// A blunt end of the run; `line` is the failure's lasting name within the builder.
void build_fatal(const std::string& line1, const std::string& line2, const std::string& line3, const std::string& line4,
                 int line);
