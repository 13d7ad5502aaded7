#include "files/zip_io.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <new>
#include <vector>

#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/zip_large.h"
#include "files/zip_memory.h"
#include "platform/beneath.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

constexpr std::size_t block_size = 256u << 10;
constexpr std::size_t name_size = 256;  // longest name of an entry
constexpr unsigned long link_bits = 0xa000;
constexpr char fork_prefix[] = "__MACOSX";
constexpr std::size_t fork_skip = 9;                               // the prefix and the "/" behind it
constexpr unsigned char kAppleHeader[24] = {0, 5, 0x16, 7, 0, 2};  // AppleDouble: magic, version 2

void log_failure(const char* what, int err, const std::string& in_file) {
    xer << what << err << ". file = " << sErrFile << " line = " << sErrLine << ". inFile=" << in_file << ".\n";
}

// The end of the list is no failure.
int noted(int err, const char* file, int line) {
    return err == UNZ_OK || err == UNZ_END_OF_LIST_OF_FILE ? err : failed_at(err, file, line);
}

// Reads the current entry to its end and tests size and checksum.
int read_entry(unzFile zip, std::uint64_t size, const block_sink& sink) {
    int err = unzOpenCurrentFile(zip);
    if (err != UNZ_OK) return failed_at(err, OOPS_PLACE);
    const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[block_size]);
    if (!block) err = failed_at(ENOMEM, OOPS_PLACE);
    for (std::uint64_t left = size; !err && left > 0;) {
        const auto want = static_cast<unsigned>(std::min<std::uint64_t>(left, block_size));
        if (unzReadCurrentFile(zip, block.get(), want) != static_cast<int>(want))
            err = failed_at(err_zip_read, OOPS_PLACE);
        else
            err = sink(block.get(), want);
        left -= want;
    }
    const int closed = unzCloseCurrentFile(zip);
    if (!err && closed != UNZ_OK) err = failed_at(closed, OOPS_PLACE);
    return err;
}

// `folder` below the root is where the entries go.
struct expansion {
    unzFile zip;
    const std::string& zip_path;
    const beneath_folder& root;
    std::string folder;          // "", or with a "/" at its end
    const zip_promise* promise;  // null: any archive

    std::string below(const std::string& name) const { return folder + name; }
};

// A result of beneath_folder as one of ours.
int placed(int err, const char* file, int line) {
    if (err == 0) return 0;
    return failed_at(err == EXDEV ? err_leads_outside : err, file, line);
}

// The signature of what goes by, where one is wanted.
class content_test {
  public:
    explicit content_test(const zip_promise* wanted) : promise(wanted) { MD5Init(&context); }
    void take(const unsigned char* bytes, std::size_t count) {
        if (wants_signature()) MD5UpdateWide(&context, bytes, static_cast<std::uint32_t>(count));
    }
    int result() {
        if (!wants_signature()) return 0;
        MD5Final(&context);
        return md5_hex(context) == promise->signature ? 0 : failed_at(err_wrong_content, OOPS_PLACE);
    }

  private:
    bool wants_signature() const { return promise && !promise->signature.empty(); }
    const zip_promise* promise;
    MD5_CTX context;
};

// A file being written beside its target; it goes again unless it is brought there.
class part_file {
  public:
    part_file(const beneath_folder& below, const std::string& target)
        : root(below), part(std::string(folder_of(target)) + temp_part) {
        // With every right, to see which of them the user's mask leaves. What a killed run left there goes.
        int made = root.make_file(part, 0777, fd);
        if (made == EEXIST && root.remove_file(part) == 0) made = root.make_file(part, 0777, fd);
        err = placed(made, OOPS_PLACE);
        struct stat facts;
        if (!err && fstat(fd, &facts) == 0) rights = facts.st_mode & 0777;
    }
    ~part_file() {
        if (fd >= 0) close(fd);
        if (!err && !brought) root.remove_file(part);
    }
    part_file(const part_file&) = delete;
    part_file& operator=(const part_file&) = delete;

    int open_result() const { return err; }
    int write_block(const unsigned char* bytes, std::size_t count) const;
    void set_mode_and_date(const unz_file_info64& info) const;
    int bring_to(const std::string& target);

  private:
    const beneath_folder& root;
    std::string part;
    int fd = -1;
    int err;
    mode_t rights = 0777;  // that the user's mask leaves to new files
    bool brought = false;
};

int part_file::write_block(const unsigned char* bytes, std::size_t count) const {
    while (count > 0) {
        const ssize_t n = write(fd, bytes, count);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return failed_at(errno, OOPS_PLACE);
        bytes += n;
        count -= static_cast<std::size_t>(n);
    }
    return 0;
}

// Entries carry local time without a zone, and a full year. A volume that knows no modes or dates is no failure.
void part_file::set_mode_and_date(const unz_file_info64& info) const {
    const bool told = info.external_fa != 0;
    fchmod(fd, (told ? static_cast<mode_t>(info.external_fa >> 16) : 0666) & rights);
    if (!told) return;
    std::tm date = {};
    date.tm_sec = static_cast<int>(info.tmu_date.tm_sec);
    date.tm_min = static_cast<int>(info.tmu_date.tm_min);
    date.tm_hour = static_cast<int>(info.tmu_date.tm_hour);
    date.tm_mday = static_cast<int>(info.tmu_date.tm_mday);
    date.tm_mon = static_cast<int>(info.tmu_date.tm_mon);
    date.tm_year = static_cast<int>(info.tmu_date.tm_year) - 1900;
    date.tm_isdst = -1;
    const timespec at = {std::mktime(&date), 0};
    const timespec times[2] = {at, at};
    futimens(fd, times);
}

int part_file::bring_to(const std::string& target) {
    const int closed = close(fd);
    fd = -1;
    if (closed != 0) return failed_at(errno, OOPS_PLACE);
    const int renamed = placed(root.rename(part, target), OOPS_PLACE);
    brought = renamed == 0;
    return renamed;
}

int unzip_file(const expansion& from, const std::string& target, unz_file_info64 info) {
    const bool large = mend_large_sizes(from.zip, info);  // before the claim is looked at
    if (from.promise && info.uncompressed_size > from.promise->most_bytes)
        return failed_at(err_wrong_content, OOPS_PLACE);
    part_file part(from.root, target);
    if (part.open_result()) return part.open_result();
    content_test test(from.promise);
    const block_sink write = [&](const unsigned char* bytes, std::size_t count) {
        test.take(bytes, count);
        return part.write_block(bytes, count);
    };
    int err = large ? read_large_entry(from.zip, from.zip_path, info, write)
                    : read_entry(from.zip, info.uncompressed_size, write);
    if (!err) err = test.result();
    if (err) return err;
    part.set_mode_and_date(info);
    return part.bring_to(target);
}

int unzip_symlink(const expansion& from, const std::string& target, const unz_file_info64& info) {
    // No link can be that long.
    if (info.uncompressed_size >= PATH_MAX) return failed_at(from.promise ? err_wrong_content : -1, OOPS_PLACE);
    std::string text;
    content_test test(from.promise);
    int err = read_entry(from.zip, info.uncompressed_size, [&](const unsigned char* bytes, std::size_t count) {
        test.take(bytes, count);
        text.append(bytes, bytes + count);
        return 0;
    });
    if (!err) err = test.result();
    if (err) return err;

    const std::string part = std::string(folder_of(target)) + temp_part;
    from.root.remove_file(part);
    err = from.root.make_link(text, part);
    if (!err) err = from.root.rename(part, target);
    if (!err) return 0;
    from.root.remove_file(part);
    return err == EXDEV || from.promise ? placed(err, OOPS_PLACE) : failed_at(-1, OOPS_PLACE);
}

// `size` is the length that the archive claims: a name with a NUL in it or one that was cut is none of ours.
bool is_safe_name(const std::string& name, std::size_t size) {
    if (name.empty() || name.size() != size) return false;
    const std::string_view path = without_slash(name);
    return path_stays_below(path) && last_part(path) != temp_part;
}

// An archive could lay a link first and then write through it, to where nobody looks for its files.
bool leads_through_link(const expansion& from, const std::string& name) {
    struct stat facts;
    for (const std::string_view folder : folders_passed(without_slash(name)))
        if (from.root.look(from.below(std::string(folder)), facts) == 0 && S_ISLNK(facts.st_mode)) return true;
    return false;
}

int unzip_entry(const expansion& from, const std::string& name, const std::string& target,
                const unz_file_info64& info) {
    if (!is_safe_name(name, info.size_filename) || leads_through_link(from, name))
        return failed_at(err_zip_read, OOPS_PLACE);
    const bool fork = std::string_view(name).starts_with(fork_prefix);
    if (name.back() == '/') {
        const std::string folder = target.substr(0, target.size() - 1);
        const int err = fork ? 0 : from.root.make_folder(folder, 0755);
        return err == EXDEV ? placed(err, OOPS_PLACE) : show_make_dir_err(err) ? failed_at(err, OOPS_PLACE) : 0;
    }
    if (fork) return unzip_resource_fork(from.zip, from.below(name.substr(std::min(name.size(), fork_skip))), info);
    if ((info.external_fa >> 16 & link_bits) != link_bits) return unzip_file(from, target, info);
    const int err = unzip_symlink(from, target, info);
    if (err) log_failure("Zip to symlink failed with error ", err, target);
    return err;
}

// An archive of a release carries one file. Before anything is made: one entry of the promised name, and no other but
// its fork.
int check_entries(const expansion& from) {
    int promised = 0, forks = 0;
    int err = unzGoToFirstFile(from.zip);
    for (; err == UNZ_OK && promised + forks < 3; err = unzGoToNextFile(from.zip)) {
        unz_file_info64 info;
        char name[name_size + 1] = {};
        err = unzGetCurrentFileInfo64(from.zip, &info, name, name_size, nullptr, 0, nullptr, 0);
        if (err != UNZ_OK) break;
        if (std::string_view(name).starts_with(fork_prefix))
            ++forks;
        else if (from.promise->name == name && info.size_filename == from.promise->name.size())
            ++promised;
        else
            return failed_at(err_wrong_content, OOPS_PLACE);
    }
    if (err != UNZ_OK && err != UNZ_END_OF_LIST_OF_FILE) return failed_at(err, OOPS_PLACE);
    return promised == 1 && forks <= 1 ? 0 : failed_at(err_wrong_content, OOPS_PLACE);
}

// `name` is the caller's for the first entry and null for the others.
int unzip_current(const expansion& from, std::string* name, int use_name) {
    unz_file_info64 info;
    char own_name[name_size + 1] = {};  // minizip sets no end behind a name that fills its buffer
    int err = unzGetCurrentFileInfo64(from.zip, &info, own_name, name_size, nullptr, 0, nullptr, 0);
    if (err != UNZ_OK) {
        xer << "unzGetCurrentFileInfo err != UNZ_OK! err=" << err << "\n";
        return failed_at(err, OOPS_PLACE);
    }
    std::string target = from.below(name && use_name ? *name : own_name);
    const bool fork = std::string_view(own_name).starts_with(fork_prefix);
    if (from.promise && !from.promise->under.empty() && !fork) target = from.promise->under;
    if (name) *name = own_name;
    err = unzip_entry(from, own_name, target, info);
    if (err) {
        log_failure("Zip to file failed with error ", err, target);
        xer << "UNZIP zip_to_file failed with err=" << err << "\n";
    }
    return err;
}

// The bytes of an archive that is worth reading at once; none of any other.
std::vector<unsigned char> small_file(const std::string& path) {
    constexpr off_t most = 1 << 20;
    std::vector<unsigned char> bytes;
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) return bytes;
    struct stat facts;
    if (fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode) && facts.st_size <= most) {
        bytes.resize(static_cast<std::size_t>(facts.st_size));
        if (read(fd, bytes.data(), bytes.size()) != facts.st_size) bytes.clear();
    }
    close(fd);
    return bytes;
}

}  // namespace

int unzip_resource_fork(void* zip, const std::string& path, const unz_file_info64& info) {
    std::string head;
    int err = read_entry(zip, info.uncompressed_size, [&head](const unsigned char* bytes, std::size_t count) {
        if (head.size() < sizeof kAppleHeader) head.append(bytes, bytes + std::min(count, sizeof kAppleHeader));
        return 0;
    });
    if (!err && (head.size() < sizeof kAppleHeader || std::memcmp(head.data(), kAppleHeader, sizeof kAppleHeader) != 0))
        err = failed_at(err_fork_header, OOPS_PLACE);
    if (err) log_failure("Unzip RF failed with error ", err, path);
    return err;
}

static int expand_archive(const std::string& zip, const beneath_folder& root, const std::string& folder,
                          const zip_promise* promise, std::string* name, int use_name) {
    const std::string full = app_path + zip;
    const std::vector<unsigned char> bytes = small_file(full);
    const unzFile in = bytes.empty() ? unzOpen64(full.c_str()) : unzip_open_memory(bytes);
    if (!in) {
        xer << "OK I am about to report that I could not open a zip file for extraction!\nThat incoming file is "
            << full << "\nIn c-form, it is " << full.c_str() << "\nThe size is " << full.size() << "\n";
        return failed_at(err_zip_open, OOPS_PLACE);
    }
    const expansion from = {in, zip, root, folder, promise};
    int err = promise ? check_entries(from) : 0;
    if (!err) err = noted(unzGoToFirstFile(in), OOPS_PLACE);
    while (err == UNZ_OK) {
        err = unzip_current(from, name, use_name);
        name = nullptr;  // it is the first entry's
        if (err == UNZ_OK) err = noted(unzGoToNextFile(in), OOPS_PLACE);
    }
    const int closed = noted(unzClose(in), OOPS_PLACE);
    if (err == UNZ_END_OF_LIST_OF_FILE) err = closed;
    if (err)
        xer << "Zip to file failed with error err = " << err << ". file = " << sErrFile << " line = " << sErrLine
            << ".\n";
    return err;
}

int zip_to_file(const std::string& zip, const std::string& out_dir, std::string* name, int use_name) {
    const beneath_folder root(out_dir.empty() && app_path.empty() ? "." : app_path + out_dir);
    return expand_archive(zip, root, "", nullptr, name, use_name);
}

int zip_to_file(const std::string& zip, const beneath_folder& root, const std::string& folder,
                const zip_promise& promise) {
    return expand_archive(zip, root, folder.empty() ? folder : folder + "/", &promise, nullptr, 0);
}

bool is_whole_archive(const std::string& path) {
    const unzFile zip = unzOpen64(path.c_str());
    if (zip) unzClose(zip);
    return zip != nullptr;
}

bool is_bad_archive(int result) {
    switch (result) {
        case err_zip_open:
        case err_zip_read:
        case err_fork_header:
        case err_wrong_content:
            return true;
        default:
            return result < UNZ_ERRNO;  // minizip's own words about an archive
    }
}
