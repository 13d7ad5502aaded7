#include "platform/folders.h"

#include <dirent.h>
#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>

#include "platform/paths.h"

static constexpr char temp_prefix[] = "velaris-";
static constexpr std::size_t temp_random = 6;  // letters and digits that mkdtemp puts behind it

// The temporary folder. Process: from the first question for it to its removal. A signal handler reads this, and a
// forked child inherits it and must leave the folder to its parent.
static struct {
    char path[PATH_MAX];  // with its "/"; empty until made
    volatile sig_atomic_t fd = -1;
    pid_t owner;
} temp;
static std::string temp_refused;
const char* system_temp_folder = "/tmp/";

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

// "velaris/" below it, made with all that is missing on the way, private to the user; empty where it cannot be made.
static std::string own_folder_below(const std::string& base) {
    if (base.empty()) return base;
    const std::string folder = base + "velaris/";
    for (const std::string_view passed : folders_passed(folder))
        mkdir(std::string(passed).c_str(), 0700);
    return is_folder(folder) ? folder : std::string();
}

std::string state_folder() {
    return own_folder_below(xdg_base("XDG_STATE_HOME", ".local/state/"));
}

std::string cache_folder() {
    return own_folder_below(xdg_base("XDG_CACHE_HOME", ".cache/"));
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

std::vector<std::string> user_folders() {
    const std::string home = home_folder();
    std::vector<std::string> folders = {home};
    for (const char* usual :
         {"Desktop", "Documents", "Downloads", "Music", "Pictures", "Public", "Templates", "Videos"})
        folders.push_back(home + usual + "/");
    std::ifstream file(xdg_base("XDG_CONFIG_HOME", ".config/") + "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        const std::size_t equals = line.find("_DIR=\"");
        if (!line.starts_with("XDG_") || equals == std::string::npos) continue;
        const std::string named = user_dir_value(line.substr(equals + 5), home);
        if (!named.empty()) folders.push_back(named);
    }
    return folders;
}

std::string temp_stream_zip(int stream) {
    return std::to_string(stream) + ".zip";
}

static void empty_temp_folder(int fd) {
    for (const char* name :
         {temp_server_list, temp_directory_zip, temp_signature, temp_directory, temp_part, temp_marker})
        unlinkat(fd, name, 0);
    char zip[] = "0.zip";  // a signal handler may make no string
    for (; *zip < '0' + temp_streams; ++*zip)
        unlinkat(fd, zip, 0);
}

// A folder of ours whose run is gone: a living one holds its lock. Anything unknown in it keeps it.
static void remove_if_stale(int parent, const char* name) {
    const int fd = openat(parent, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (fd < 0) return;
    struct stat facts;
    const bool ours = fstat(fd, &facts) == 0 && facts.st_uid == geteuid() && (facts.st_mode & 07777) == 0700;
    struct stat marker;
    if (ours && fstatat(fd, temp_marker, &marker, AT_SYMLINK_NOFOLLOW) == 0 && S_ISREG(marker.st_mode) &&
        flock(fd, LOCK_EX | LOCK_NB) == 0) {
        empty_temp_folder(fd);
        unlinkat(parent, name, AT_REMOVEDIR);
    }
    close(fd);
}

// What runs that were killed have left.
static void remove_stale_below(const std::string& parent) {
    DIR* listing = opendir(parent.c_str());
    if (!listing) return;
    while (const dirent* entry = readdir(listing)) {
        const std::string_view name = entry->d_name;
        if (name.starts_with(temp_prefix) && name.size() == sizeof temp_prefix - 1 + temp_random)
            remove_if_stale(dirfd(listing), entry->d_name);
    }
    closedir(listing);
}

// Takes the lock by which other runs see that this one lives. False if one of them has just swept the folder away.
static bool hold_temp_folder(const std::string& path) {
    const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    struct stat held, there;
    const bool busy = fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    const int marker = fd < 0 ? -1 : openat(fd, temp_marker, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (marker >= 0) close(marker);
    if (marker < 0 || busy || fstat(fd, &held) != 0 || stat(path.c_str(), &there) != 0 || held.st_ino != there.st_ino) {
        if (marker >= 0) unlinkat(fd, temp_marker, 0);
        if (fd >= 0) close(fd);
        return false;
    }
    path.copy(temp.path, sizeof temp.path - 1);
    temp.owner = getpid();
    temp.fd = fd;
    return true;
}

// A run that starts at the same moment may take the new folder, not yet locked, for a leftover: then another is made.
static bool make_temp_below(const std::string& parent) {
    // The caller of get_OS_abs_path sees ":" and "\" as "/", so a folder with one of them could never be reached.
    if (parent.empty() || parent.find_first_of(":\\") != std::string::npos) return false;
    remove_stale_below(parent);
    for (int tries = 0; tries < 3; ++tries) {
        std::string name = parent + temp_prefix + std::string(temp_random, 'X');
        if (!mkdtemp(name.data())) return false;
        if (hold_temp_folder(name + "/")) return true;
        rmdir(name.c_str());
    }
    return false;
}

std::string temp_folder_refused() {
    return temp_refused;
}

static std::string private_temp_folder() {
    const char* const named = std::getenv("TMPDIR");
    if (temp.fd < 0 && !make_temp_below(folder_from_environment("TMPDIR"))) {
        if (!make_temp_below(system_temp_folder)) return {};
        temp_refused = named ? named : "";
    }
    static const bool removed_at_exit = std::atexit(remove_temp_folder) == 0;
    return removed_at_exit ? temp.path : std::string();
}

void get_OS_abs_path(int which, std::string* out) {
    std::string folder;
    switch (which) {
        case os_dir_this_app:
            folder = folder_of(executable_path());
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
    if (temp.fd < 0 || temp.owner != getpid()) return;
    empty_temp_folder(temp.fd);
    rmdir(temp.path);
    close(temp.fd);
    temp.fd = -1;
    std::memset(temp.path, 0, sizeof temp.path);
}

bool folder_is_writable(const std::string& path) {
    return is_folder(path) && faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}
