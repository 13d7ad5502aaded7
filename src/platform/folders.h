// folders.h: where things lie on this system: the five folders of get_OS_abs_path, the state folder and the private
// temporary folder of this run.
// Paths: byte strings with "/"; every folder ends in one "/".
// Errors: nothing throws; a folder that cannot be had leaves the caller's string as it stood, or is empty.
// Threads: main thread only.
#pragma once

#include <string>
#include <vector>

enum {
    os_dir_this_app = 0,      // folder of the running executable, by the kernel's link to it
    os_dir_desktop = 1,       // XDG desktop folder, else "Desktop" below the home folder
    os_dir_default_apps = 2,  // the home folder, parent of new installs
    os_dir_temp = 3,          // private to this run, mode 0700, made at first need
    os_dir_prefs = 4          // "velaris/" below the configuration folder, made with mode 0700 if missing
};

// Leaves `out` as it stood when the folder cannot be had. "\" and ":" of the result become "/".
void get_OS_abs_path(int which, std::string* out);

// The home folder, and the desktop's folders in it (documents, downloads, ...): as the user has set them, or by their
// usual names.
std::vector<std::string> user_folders();

// HOME, else the password entry; ends in "/". Empty when neither is known.
std::string home_folder();

// "velaris/" below XDG_STATE_HOME or ~/.local/state/, made if missing; empty when it cannot be made.
std::string state_folder();

// "velaris/" below XDG_CACHE_HOME or ~/.cache/, made if missing; empty when it cannot be made.
std::string cache_folder();

// Path of the running executable; empty when the kernel does not tell.
std::string executable_path();

// What a run puts into its temporary folder.
constexpr char temp_server_list[] = "serverlist.txt";
constexpr char temp_directory_zip[] = "directory.txt.zip", temp_directory[] = "directory.txt";
constexpr char temp_signature[] = "directory.txt.zip.minisig";
constexpr char temp_marker[] = ".velaris.temp";      // of ours; without it a folder that was left is not touched
constexpr char own_prefix[] = ".velaris.";           // every name below is ours in the destination; no release has one
constexpr char emptied_note[] = ".velaris.emptied";  // paths that a run deleted, until it has swept their folders
// Empty; it says that the folder held other things before the first install.
constexpr char name_stays_note[] = ".velaris.keeps_name";
// A file that is being expanded, here and in the destination's folders. Hidden, so that no listing of ours shows one
// that a kill left behind; the next install removes it.
constexpr char temp_part[] = ".velaris.part";
constexpr int temp_streams = 4;  // files that travel at once
// What TMPDIR names, if that could not be used and the system's own temporary folder was taken instead; else empty.
std::string temp_folder_refused();
std::string temp_stream_zip(int stream);  // "0.zip" to "3.zip"

// Removes these files from the temporary folder, then the folder if it is empty. Files that the program does not know
// stay. No effect if none was made. It happens at the exit of the process anyway, for ends that close nothing; a signal
// handler may call it. What a run that was killed has left goes when the next one makes its own folder in the same
// place: it bears our marker, and no living run holds a lock on it.
void remove_temp_folder();

// True if a file can be made in the existing folder `path`; nothing is made for the test.
bool folder_is_writable(const std::string& path);

// "/tmp/"; for tests, which cannot take that away from the system.
extern const char* system_temp_folder;
