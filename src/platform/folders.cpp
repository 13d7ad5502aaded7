#include "platform/folders.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>

// Process. Empty until made; a forked child inherits the name and must leave the folder to its parent.
static std::string temp_folder;
static pid_t temp_owner;

static std::string with_slash(std::string folder) {
    if (!folder.empty() && folder.back() != '/') folder += '/';
    return folder;
}

// Only an absolute path is taken: a relative one would mean another folder after each change of the current one.
static std::string folder_from_environment(const char* name) {
    const char* value = std::getenv(name);
    return value && value[0] == '/' ? with_slash(value) : std::string();
}

std::string home_folder() {
    std::string home = folder_from_environment("HOME");
    if (!home.empty()) return home;
    const passwd* entry = getpwuid(getuid());
    return entry && entry->pw_dir ? with_slash(entry->pw_dir) : std::string();
}

// The folder that `variable` names, else `fallback` below the home folder; empty when neither is known.
static std::string xdg_base(const char* variable, const char* fallback) {
    std::string named = folder_from_environment(variable);
    if (!named.empty()) return named;
    const std::string home = home_folder();
    return home.empty() ? home : home + fallback;
}

static bool is_folder(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

// Makes what is missing of `folder`, private to the user.
static bool make_private_folders(const std::string& folder) {
    for (std::size_t slash = folder.find('/', 1); slash != std::string::npos; slash = folder.find('/', slash + 1))
        mkdir(folder.substr(0, slash).c_str(), 0700);
    return is_folder(folder);
}

static std::string own_folder_below(const std::string& base) {
    if (base.empty()) return base;
    const std::string folder = base + "velaris/";
    return make_private_folders(folder) ? folder : std::string();
}

std::string state_folder() {
    return own_folder_below(xdg_base("XDG_STATE_HOME", ".local/state/"));
}

std::string executable_path() {
    std::string path(256, '\0');
    for (;;) {
        const ssize_t size = readlink("/proc/self/exe", path.data(), path.size());
        if (size < 0) return {};
        if (static_cast<std::size_t>(size) < path.size()) {
            path.resize(static_cast<std::size_t>(size));
            return path;
        }
        path.resize(path.size() * 2);
    }
}

static std::string folder_of_executable() {
    const std::string path = executable_path();
    return path.substr(0, path.rfind('/') + 1);
}

// The value of a line such as XDG_DESKTOP_DIR="$HOME/Desktop", quoted as for a shell; empty unless it is below the home
// folder or absolute, the only two forms that the file may hold.
static std::string user_dir_value(const std::string& quoted, const std::string& home) {
    std::string value;
    for (std::size_t i = 1; i < quoted.size() && quoted[i] != '"'; ++i) {
        if (quoted[i] == '\\' && i + 1 < quoted.size()) ++i;
        value += quoted[i];
    }
    if (value.starts_with("$HOME/")) return with_slash(home + value.substr(6));
    if (value.starts_with("/")) return with_slash(value);
    return {};
}

static std::string desktop_folder() {
    static const std::string key = "XDG_DESKTOP_DIR=\"";
    const std::string home = home_folder();
    std::string folder = home.empty() ? home : home + "Desktop/";
    std::ifstream file(xdg_base("XDG_CONFIG_HOME", ".config/") + "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(key)) continue;
        const std::string named = user_dir_value(line.substr(key.size() - 1), home);
        if (!named.empty()) folder = named;
    }
    return folder;
}

static std::string make_temp_below(const std::string& parent) {
    // The caller of get_OS_abs_path sees ":" and "\" as "/", so a folder with one of them could never be reached.
    if (parent.empty() || parent.find_first_of(":\\") != std::string::npos) return {};
    std::string name = parent + "velaris-XXXXXX";
    return mkdtemp(name.data()) ? name + "/" : std::string();
}

static std::string private_temp_folder() {
    if (!temp_folder.empty()) return temp_folder;
    temp_folder = make_temp_below(folder_from_environment("TMPDIR"));
    if (temp_folder.empty()) temp_folder = make_temp_below("/tmp/");
    temp_owner = getpid();
    static const bool removed_at_exit = std::atexit(remove_temp_folder) == 0;
    return removed_at_exit ? temp_folder : std::string();
}

void get_OS_abs_path(int which, std::string* out) {
    std::string folder;
    switch (which) {
        case os_dir_this_app:
            folder = folder_of_executable();
            break;
        case os_dir_desktop:
            folder = desktop_folder();
            break;
        case os_dir_default_apps:
            folder = home_folder();
            break;
        case os_dir_temp:
            folder = private_temp_folder();
            break;
        case os_dir_prefs:
            folder = own_folder_below(xdg_base("XDG_CONFIG_HOME", ".config/"));
            break;
        default:
            break;
    }
    if (folder.empty()) return;
    std::replace_if(
        folder.begin(), folder.end(), [](char c) { return c == ':' || c == '\\'; }, '/');
    *out = folder;
}

void remove_temp_folder() {
    if (temp_folder.empty() || temp_owner != getpid()) return;
    for (const char* name :
         {"serverlist.txt", "directory.txt.zip", "directory.txt", "0.zip", "1.zip", "2.zip", "3.zip"})
        unlink((temp_folder + name).c_str());
    rmdir(temp_folder.c_str());
    temp_folder.clear();
}

bool folder_is_writable(const std::string& path) {
    return is_folder(path) && faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}
