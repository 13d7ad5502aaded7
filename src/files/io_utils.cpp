#include "files/io_utils.h"

#include <dirent.h>
#include <fcntl.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "files/error_str.h"
#include "files/file_kind.h"
#include "platform/paths.h"
#include "platform/sync.h"
#include "runtime/bytes.h"
#include "runtime/hl_string.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

std::ofstream ouf;
thread_local const char* sErrFile = "";
thread_local int sErrLine = 0;
std::string get_path_with_path_file;

int failed_at(int code, const char* file, int line) {
    sErrFile = file;
    sErrLine = line;
    return code;
}

// A result of -1 is a failure with its code in errno.
static int checked(int result, const char* file, int line) {
    return result == 0 ? 0 : failed_at(errno, file, line);
}

void get_path_with_path(std::string& dir, const std::string& full) {
    // Callers pass one string for both.
    const std::size_t length = folder_length(full);
    std::string last = full.substr(length);
    dir.assign(full, 0, length);
    get_path_with_path_file = std::move(last);
}

static bool stat_mended(const std::string& path, struct stat& st) {
    char full[path_buffer_size];
    copy_to_path_buffer(full, path);
    if (g_case_sensitive) findPath(full);
    return stat(full, &st) == 0;
}

bool file_exists(const std::string& path) {
    struct stat st;
    return stat_mended(app_path + path, st) && !S_ISDIR(st.st_mode);
}

bool dir_exists(const std::string& path) {
    struct stat st;
    return stat_mended(std::string(without_slash(app_path + path)), st) && S_ISDIR(st.st_mode);
}

int delete_file(const std::string& path) {
    return delete_full_path(app_path + path);
}

int delete_full_path(const std::string& full) {
    if (full.empty()) return failed_at(ENOENT, OOPS_PLACE);
    if (full.back() == '/') return checked(rmdir(std::string(without_slash(full)).c_str()), OOPS_PLACE);
    return checked(unlink(full.c_str()), OOPS_PLACE);
}

int rename_file(const std::string& base, const std::string& old_name, const std::string& new_name) {
    return checked(std::rename((base + old_name).c_str(), (base + new_name).c_str()), OOPS_PLACE);
}

int make_folder(const std::string& path) {
    return checked(mkdir(std::string(without_slash(path)).c_str(), 0755), OOPS_PLACE);
}

int show_del_err(int) {
    return 0;
}

int show_make_dir_err(int err) {
    return err != 0 && err != EEXIST && err != -48;
}

int make_file_executable(const std::string& path) {
    return checked(chmod((app_path + path).c_str(), 0755), OOPS_PLACE);
}

bool is_sim_link(const std::string& path, std::string* target) {
    char text[path_buffer_size - 1];
    const ssize_t length = readlink((app_path + path).c_str(), text, sizeof text);
    if (length < 0) return false;
    if (target) target->assign(text, static_cast<std::size_t>(length));
    return true;
}

static bool write_header(const char* full, int type, int version, const std::string& extra) {
    ouf.clear();
    if (ouf.is_open()) ouf.close();
    ouf.clear();
    ouf.open(full, type == file_binary ? std::ios::out | std::ios::trunc | std::ios::binary
                                       : std::ios::out | std::ios::trunc);
    ouf << std::fixed;
    if (type == file_binary) {
        ouf << 'i';
        ouf.write(reinterpret_cast<const char*>(&version), sizeof version);
    } else {
        ouf << "I\n" << version << " version" << (extra == "no-copyright-string" ? "" : extra) << "\n";
    }
    // A full disk shows here and not only when the caller is through.
    return ouf.flush().good();
}

static void lower_extension(std::string& path) {
    if (path.size() < 4) return;
    for (std::size_t i = path.size() - 3; i < path.size(); ++i)
        if (path[i] >= 'A' && path[i] <= 'Z') path[i] = static_cast<char>(path[i] - 'A' + 'a');
}

static void could_not_save(std::string full) {
    if (full.ends_with(ouf_beside)) full.resize(full.size() - std::strlen(ouf_beside));
    __MACIBM_alert(0,
                   "I could not save the file! Could the directory that the file sits in be missing? Or flagged as "
                   "READ-ONLY by the operating system? (Windows machines typically do this).",
                   full, "Could the file be flagged as read-only? This happens in Windows if you copy it from a CD!",
                   "Try putting this app in the background and then flag the file as NOT read-only, or creating the "
                   "folder listed in the path above.",
                   t_alert, "HLutils/Files/io_utils", 1064);
}

int ouf_open(const std::string& path, int type, int version, const std::string& extra) {
    if (type != file_binary && type != file_text)
        __MACIBM_alert(0, "Bad ouf_open type!", "", "", "", t_exit, "HLutils/Files/io_utils", 1010);
    std::string full = app_path + path;
    lower_extension(full);
    char buffer[path_buffer_size];
    copy_to_path_buffer(buffer, full);
    if (write_header(buffer, type, version, extra)) return 1;
    make_folder(std::string(folder_of(full)));
    if (write_header(buffer, type, version, extra)) return 1;
    could_not_save(full);
    return 0;
}

int ouf_close_onto(const std::string& path) {
    std::string full = app_path + path;
    const std::string beside = full + ouf_beside;
    lower_extension(full);
    const bool whole = ouf.is_open() && ouf.flush().good();
    ouf.close();
    if (whole && sync_file(beside) == 0 && std::rename(beside.c_str(), full.c_str()) == 0) return 1;
    unlink(beside.c_str());
    could_not_save(full);
    return 0;
}

// Overwrites the component by the spelling found in `folder`; of several the first in byte order, but the component's
// own before all others. False if there is none.
static bool mend_component(const char* folder, char* component) {
    DIR* listing = opendir(folder);
    if (!listing) return false;
    std::string best;
    while (const dirent* entry = readdir(listing)) {
        const std::string name = entry->d_name;
        if (strcasecmp(name.c_str(), component) != 0 || best == component) continue;
        if (best.empty() || name == component || name < best) best = name;
    }
    closedir(listing);
    std::memcpy(component, best.data(), best.size());  // the same length, by the comparison
    return !best.empty();
}

void findPath(char* path) {
    struct stat st;
    if (stat(path, &st) == 0) return;
    std::string folder = *path == '/' ? "/" : "./";
    for (char* from = path; *from;) {
        if (*from == '/') {
            ++from;
            continue;
        }
        char* to = from + std::strcspn(from, "/");
        const char after = *to;
        *to = 0;
        const bool found = mend_component(folder.c_str(), from);
        folder += from;
        folder += '/';
        *to = after;
        if (!found) return;
        from = to;
    }
}

int launch_app(const std::string& path, const std::string& arg) {
    const std::string full = app_path + std::string(without_slash(path));
    xer << "Launching: " << full << " with " << arg << "\n" << std::flush;
    const char* const with_folder[] = {full.c_str(), "-path", arg.c_str(), nullptr};
    const char* const alone[] = {full.c_str(), nullptr};
    const char* const* argv = arg.empty() ? alone : with_folder;
    const pid_t child = fork();
    if (child < 0) return errno;
    if (child == 0) {
        signal(SIGPIPE, SIG_DFL);  // ignored here, and an ignored signal would stay so in the new program
        execv(full.c_str(), const_cast<char* const*>(argv));
        _exit(errno);
    }
    MACIBM_finishup(1);
    if (alert_front.leave) alert_front.leave(1);
    std::exit(1);
}

int make_file_large_address_aware(const std::string& path) {
    int fd = open(path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    // One that may only be read may be marked already.
    const int only_to_read = fd < 0 ? errno : 0;
    if (fd < 0) fd = open(path.c_str(), O_RDONLY | O_NOCTTY | O_CLOEXEC);
    if (fd < 0) return only_to_read;
    // The old header tells where the new one is, whose flags hold the bit.
    const auto set_bit = [&]() -> int {
        unsigned char dos[64], pe[24];
        if (read(fd, dos, sizeof dos) != sizeof dos) return EIO;
        if (little_word(dos, 2) != 23117) return err_not_mz;
        const off_t at = static_cast<std::int32_t>(little_word(dos + 60, 4));
        if (lseek(fd, at, SEEK_SET) < 0) return errno;
        if (read(fd, pe, sizeof pe) != sizeof pe) return EIO;
        if (little_word(pe, 4) != 17744) return err_not_pe;
        if (pe[22] & 32) return 0;
        if (only_to_read) return only_to_read;
        pe[22] |= 32;
        return pwrite(fd, pe, sizeof pe, at) == sizeof pe ? 0 : EIO;
    };
    const int err = set_bit();
    const int closed = close(fd) == 0 ? 0 : errno;
    return err ? err : closed;
}
