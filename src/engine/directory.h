// directory.h: the catalogue of a release, "directory.txt": every file, every earlier version of it that ever shipped,
// and every file that was withdrawn; and what the destination folder has of it.
//
// Form: the text header with version 840 or 900 and the title "INSTALLER", then lines
//   DIR folder/                                    folder of the FILE lines behind it
//   FILE disc_set platform version zip_size ext_size signature name
// in which rows of one path stand together, oldest first; the last row is the file's current state. A path's first
// component is a distribution folder and no part of the installed path. Sizes are thousands of bytes, cut.
// The history is there so that a file on the disk that matches any row is stale and is replaced without a question;
// only a signature that no row knows means that the user changed the file.
// Threads: main thread only.
#pragma once

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/beneath.h"

struct file_version_struct {
    int disc_set = 0;    // 0 to 4, as the builder's edition was; no decision hangs on it
    int platform = 0;    // 0 everyone, 1 Macintosh, 2 Windows, 3 Linux, 6 Linux among the common files
    int version = 0;     // release that produced the row, as 90019
    float zip_size = 0;  // kilobytes of 1000 bytes
    float ext_size = 0;
    std::string sig_want;  // or "GONE": withdrawn
    std::string sig_have;  // of the file on disk, or "NONE"; last row only
    std::string path;      // distribution folder, folders, name
    int have_file = 0;     // these three: last row only
    int do_fetch = 0;
    int do_delete = 0;
};
typedef std::vector<file_version_struct> file_history_struct;

extern std::vector<file_history_struct> sim_info;
extern std::set<std::string> deleted_files;  // folders that may have become empty, each with its "/"
extern int this_install_has_exes;            // a wanted, missing row was made for one platform; never cleared

// Reads the catalogue. 3: sim_info is valid; 2: the file was refused (a header of another kind or version, or a row that
// would leave the destination, which an alert names). Long; reports through the front. A missing file is a fatal alert.
// An examination of the rows that were there before must not run (examine.h).
int read_catalogue(const std::string& dir_path, const std::string& label);

int want_this_f(int file, int row, int set);
bool is_wanted(int file);  // its current row is for the system that is installed for

// Tells the user that the file is newer than the program, opens the download page and ends the flow.
void new_format(const std::string& path);

inline bool is_gone(const file_version_struct& row) {
    return row.sig_want == "GONE";
}
// The destination, so that no path leads out of it.
beneath_folder destination_folder();
// The path below the destination, and with the destination before it.
std::string installed_path(const file_version_struct& row);
std::string_view installed_view(const file_version_struct& row);  // while the row lives
std::string destination_of(const file_version_struct& row);

// `path` lies somewhere in `folder` (without a "/" at its end), and is not the folder itself.
bool path_is_inside(std::string_view path, std::string_view folder);

// Histories that share one installed path (a file moved between "All" and a platform's folder) know each other: indices
// in sim_info of all of them, this one included. Empty for a file that shares with none. Built by read_catalogue.
const std::vector<int>& same_installed_path(int file);
// Some row of the history, or of one that shares its installed path, has this signature: it was shipped.
bool signature_was_shipped(int file, const std::string& signature);

// Installed paths that one history has as a file while another has a file below them: a file became a folder, or a
// folder a file. Each with the histories that have it as a file. Empty as a rule. Built by read_catalogue.
typedef std::map<std::string, std::vector<int>, std::less<>> contested_t;
const contested_t& contested_paths();

// The way to `installed` leads through a link that is itself a file of some release. What lies there belongs to another
// row, so for this one there is nothing on the disk: else a file that was withdrawn when its folder became a link would
// be deleted through that link, in the folder where it lives on.
bool behind_shipped_link(std::string_view installed);
