// io_utils.h: the file-system work of the whole system: path arithmetic, existence, deletion, renaming, folders, links,
// the shared output stream. Paths have "/" and a folder's path ends in it; names are the bytes on disk.
// Results: 0 for success, else a code for error_str. Nothing here raises an alert but for a caller's mistake (fatal)
// and a data file that cannot be written (ouf_open, level 1).
// Threads: `ouf` is a single global of the main thread.
#pragma once

#include <fstream>
#include <string>
#include <vector>

extern std::ofstream ouf;  // the one data file being written, by one writer at a time; fixed notation

extern thread_local const char* sErrFile;  // place of the last primitive that failed in this thread
extern thread_local int sErrLine;
int failed_at(int code, const char* file, int line);  // notes the place; returns `code`

// Splits at the last "/" that is not the very last character: `dir` keeps its "/", the last component (with any "/"
// behind it) goes to get_path_with_path_file.
void get_path_with_path(std::string& dir, const std::string& full);
extern std::string get_path_with_path_file;

// For readers of our own data files: the case of a path is mended where the volume minds it. What installs, deletes or
// compares looks at the exact spelling (beneath.h).
bool file_exists(const std::string& path);  // and is no folder
bool dir_exists(const std::string& path);

int delete_file(const std::string& path);       // a "/" at the end says that it is a folder; an empty path gives 2
int delete_full_path(const std::string& full);  // for a caller that has added app_path already
// Both names are below `base` and have no "/" at their end.
int rename_file(const std::string& base, const std::string& old_name, const std::string& new_name);
int make_folder(const std::string& path);  // one level, mode 0755, app_path not added
int show_del_err(int err);                 // always 0: a failed delete is not shown
int show_make_dir_err(int err);            // 0 for success and for a folder that is already there, else 1
int make_file_executable(const std::string& path);
bool is_sim_link(const std::string& path, std::string* target);  // exact spelling; the link itself, not its target

// Opens `ouf` on the path with its last three characters in lower case, writes the header, makes one missing folder and
// tries once more. 1 on success; a failure shows a level 1 alert and gives 0. The caller writes the rest and closes.
int ouf_open(const std::string& path, int type, int version, const std::string& extra);

// For a file that must be whole or as it was: opened as `path` + ouf_beside, closed and brought to its place, once its
// bytes are on the disk, by this. 1 on success; a failure shows the same alert, leaves the file as it was and gives 0.
constexpr char ouf_beside[] = ".new";
int ouf_close_onto(const std::string& path);

// Mends the case of each component by what is on the disk; `path` is a buffer of path_buffer_size bytes.
void findPath(char* path);

// Starts another program, with "-path ARG" unless `arg` is empty, and ends this one with status 1; returns errno if no
// process could be made.
int launch_app(const std::string& path, const std::string& arg);

// Sets the large-address-aware flag of a Windows executable, in place. 20013 and 20014: no such executable.
int make_file_large_address_aware(const std::string& path);
