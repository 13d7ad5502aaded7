// directory.h: the catalogue of a release, "directory.txt": every file, every earlier version of it that ever shipped,
// and every file that was withdrawn. What the destination has of it stands in the same rows; examine.h fills that in.
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

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "engine/destination.h"
#include "platform/beneath.h"

struct file_version_struct {
    int disc_set = 0;    // 0 to 4, as the builder's edition was; no decision hangs on it
    int platform = 0;    // 0 everyone, 1 Macintosh, 2 Windows, 3 Linux, 6 Linux among the common files
    int version = 0;     // release that produced the row, as 90019
    float zip_size = 0;  // kilobytes of 1000 bytes
    float ext_size = 0;
    std::string sig_want;  // or "GONE": withdrawn
    std::string sig_have;  // of the file on disk; or "NONE", or "UNKNOWN" where something is there that cannot be read
    std::string path;      // distribution folder, folders, name
    int have_file = 0;     // these, and sig_have: last row only
    int do_fetch = 0;
    int do_delete = 0;
    int keep_copy = 0;  // the user wants his version kept beside it
};
typedef std::vector<file_version_struct> file_history_struct;

extern std::vector<file_history_struct> sim_info;
extern std::set<std::string> deleted_files;  // folders that may have become empty, each with its "/"
extern int this_install_has_exes;            // a wanted, missing row was made for one platform; never cleared

// Reads the rows and knits the indices below. 3: sim_info is valid; 2: the file was refused (a header of another kind
// or version, or a row that no honest release has, which an alert names). Reports through the front. A missing file is
// a fatal alert.
// An examination of the rows that were there before must not run (examine.h).
int read_catalogue(const std::string& dir_path, const std::string& label);

int want_this_f(int file, int row, int set);
bool is_wanted(const file_version_struct& row);  // it is for the system that is installed for

inline file_version_struct& current_row(std::size_t file) {
    return sim_info[file].back();
}

// Tells the user that the file is newer than the program, opens the download page and ends the flow.
void new_format(const std::string& path);

inline bool is_gone(const file_version_struct& row) {
    return row.sig_want == "GONE";
}
// The path below the destination, and with the destination before it.
std::string_view installed_view(const file_version_struct& row);  // holds as long as the row stays where it is
std::string installed_path(const file_version_struct& row);
std::string destination_of(const file_version_struct& row);

// `path` lies somewhere in `folder` (without a "/" at its end), and is not the folder itself.
bool path_is_inside(std::string_view path, std::string_view folder);

// Histories that meet in one file know each other: those of one installed path (a file moved between "All" and a
// platform's folder), and those whose paths turned out to lead to one file on this disk, as where upper and lower case
// are the same. Indices in sim_info of all of them, this one included; empty for a file that meets no other.
const std::vector<std::size_t>& same_file(std::size_t file);
// `files` lead to one file: what any of them knew, all know.
void join_histories(const std::vector<std::size_t>& files);
// Some row of the history, or of one that meets it, has this signature: it was shipped.
bool signature_was_shipped(std::size_t file, const std::string& signature);
// Some history that meets this one is wanted and not withdrawn.
bool lives_on_elsewhere(std::size_t file);

// Installed paths that one history has as a file while another has a file below them: a file became a folder, or a
// folder a file. Each with the histories that have it as a file. Empty as a rule. Built by read_directory.
typedef std::map<std::string, std::vector<std::size_t>, std::less<>> contested_t;
const contested_t& contested_paths();

// The way to `installed` leads through a link that is itself a file of some release. What lies there belongs to another
// row, so for this one there is nothing on the disk: else a file that was withdrawn when its folder became a link would
// be deleted through that link, in the folder where it lives on.
bool behind_shipped_link(std::string_view installed);
