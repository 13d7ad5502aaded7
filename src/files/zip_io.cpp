#include "files/zip_io.h"

#include <fcntl.h>
#include <minizip/zip.h>
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

#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "files/zip_large.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

constexpr std::size_t block_size = 256u << 10;
constexpr std::size_t name_size = 256;  // longest name of an entry
// Hidden, so that no listing of ours shows one that a crash left behind; the next expansion into its folder removes it.
constexpr char part_name[] = ".velaris.part";

constexpr unsigned long link_bits = 0xa000;
constexpr unsigned long link_attributes = 0xa1ed0000;
constexpr unsigned long made_on_unix = 3 << 8 | 20;  // or other programs would not see a mode in the attributes
constexpr std::size_t zip64_from = 0xff000000;       // less than 4 GB by what deflate may add to data it cannot shrink
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

bool begins_with(const std::string& text, const char* start) {
    return text.rfind(start, 0) == 0;
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

// The name for what is being made, beside its target so that a rename can bring it there.
std::string part_path(const std::string& target) {
    return target.substr(0, target.rfind('/') + 1) + part_name;
}

// A file being written beside its target; it goes again unless it is brought there.
class part_file {
  public:
    explicit part_file(const std::string& target) : part(part_path(target)) {
        unlink(part.c_str());
        fd = open(part.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        err = fd < 0 ? failed_at(errno, OOPS_PLACE) : 0;
    }
    ~part_file() {
        if (fd >= 0) close(fd);
        if (!err) unlink(part.c_str());  // finds nothing where the file was brought to its target
    }
    part_file(const part_file&) = delete;
    part_file& operator=(const part_file&) = delete;

    int open_result() const { return err; }
    int write_block(const unsigned char* bytes, std::size_t count) const;
    void set_mode_and_date(const unz_file_info64& info) const;
    int bring_to(const std::string& target);

  private:
    std::string part;
    int fd;
    int err;
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
    if (info.external_fa == 0) return;
    fchmod(fd, static_cast<mode_t>(info.external_fa >> 16 & 0777));
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
    if (std::rename(part.c_str(), target.c_str()) != 0) return failed_at(errno, OOPS_PLACE);
    return 0;
}

struct expansion {
    unzFile zip;
    const std::string& zip_path;
    const std::string& out_dir;
};

int unzip_file(const expansion& from, const std::string& target, unz_file_info64 info) {
    part_file part(target);
    if (part.open_result()) return part.open_result();
    const block_sink write = [&part](const unsigned char* bytes, std::size_t count) {
        return part.write_block(bytes, count);
    };
    const bool large = mend_large_sizes(from.zip, info);
    const int err = large ? read_large_entry(from.zip, from.zip_path, info, write)
                          : read_entry(from.zip, info.uncompressed_size, write);
    if (err) return err;
    part.set_mode_and_date(info);
    return part.bring_to(target);
}

int unzip_link(unzFile zip, const std::string& target, const unz_file_info64& info) {
    if (info.uncompressed_size >= PATH_MAX) return failed_at(-1, OOPS_PLACE);  // no link can be that long
    std::string text;
    const int err = read_entry(zip, info.uncompressed_size, [&text](const unsigned char* bytes, std::size_t count) {
        text.append(bytes, bytes + count);
        return 0;
    });
    if (err) return err;
    const std::string part = part_path(target);
    unlink(part.c_str());
    if (symlink(text.c_str(), part.c_str()) != 0) return failed_at(-1, OOPS_PLACE);
    if (std::rename(part.c_str(), target.c_str()) == 0) return 0;
    unlink(part.c_str());
    return failed_at(-1, OOPS_PLACE);
}

// `size` is the length that the archive claims: a name with a NUL in it or one that was cut is none of ours.
bool is_safe_name(const std::string& name, std::size_t size) {
    if (name.empty() || name.size() != size || name[0] == '/') return false;
    for (std::size_t from = 0; from < name.size();) {
        const std::size_t to = std::min(name.find('/', from), name.size());
        if (name.compare(from, to - from, "..") == 0) return false;
        from = to + 1;
    }
    return true;
}

// An archive could lay a link first and then write through it, out of the folder it was given.
bool leads_through_link(const std::string& out_dir, const std::string& name) {
    for (std::size_t slash = name.find('/'); slash + 1 < name.size(); slash = name.find('/', slash + 1)) {
        if (slash == std::string::npos) break;
        if (is_sim_link(out_dir + name.substr(0, slash), nullptr)) return true;
    }
    return false;
}

int unzip_entry(const expansion& from, const std::string& name, const std::string& target,
                const unz_file_info64& info) {
    if (!is_safe_name(name, info.size_filename) || leads_through_link(from.out_dir, name))
        return failed_at(err_zip_read, OOPS_PLACE);
    const bool fork = begins_with(name, fork_prefix);
    if (name.back() == '/') {
        const int err = fork ? 0 : make_folder(app_path + target);
        return show_make_dir_err(err) ? err : 0;
    }
    if (fork) return unzip_resource_fork(from.zip, from.out_dir + name.substr(std::min(name.size(), fork_skip)), info);
    if ((info.external_fa >> 16 & link_bits) == link_bits) return unzip_symlink(from.zip, target, info);
    return unzip_file(from, app_path + target, info);
}

int unzip_current(const expansion& from, std::string* name, int use_name) {
    unz_file_info64 info;
    char own_name[name_size + 1] = {};  // minizip sets no end behind a name that fills its buffer
    int err = unzGetCurrentFileInfo64(from.zip, &info, own_name, name_size, nullptr, 0, nullptr, 0);
    if (err != UNZ_OK) {
        xer << "unzGetCurrentFileInfo err != UNZ_OK! err=" << err << "\n";
        return failed_at(err, OOPS_PLACE);
    }
    const std::string target = from.out_dir + (name && use_name ? *name : own_name);
    if (name) *name = own_name;
    err = unzip_entry(from, own_name, target, info);
    if (err) {
        log_failure("Zip to file failed with error ", err, target);
        xer << "UNZIP zip_to_file failed with err=" << err << "\n";
    }
    return err;
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

int unzip_symlink(void* zip, const std::string& path, const unz_file_info64& info) {
    const int err = unzip_link(zip, app_path + path, info);
    if (err) log_failure("Zip to symlink failed with error ", err, path);
    return err;
}

int zip_to_file(const std::string& zip, const std::string& out_dir, std::string* name, int use_name) {
    const std::string full = app_path + zip;
    const unzFile in = unzOpen64(full.c_str());
    if (!in) {
        xer << "OK I am about to report that I could not open a zip file for extraction!\nThat incoming file is "
            << full << "\nIn c-form, it is " << full.c_str() << "\nThe size is " << full.size() << "\n";
        return failed_at(err_zip_open, OOPS_PLACE);
    }
    int err = noted(unzGoToFirstFile(in), OOPS_PLACE);
    while (err == UNZ_OK) {
        err = unzip_current({in, zip, out_dir}, name, use_name);
        name = nullptr;
        if (err == UNZ_OK) err = noted(unzGoToNextFile(in), OOPS_PLACE);
    }
    const int closed = noted(unzClose(in), OOPS_PLACE);
    if (err == UNZ_END_OF_LIST_OF_FILE) err = closed;
    if (err)
        xer << "Zip to file failed with error err = " << err << ". file = " << sErrFile << " line = " << sErrLine
            << ".\n";
    return err;
}

namespace {

struct new_entry {
    std::string name;
    int method;
    zip_fileinfo info;
    const unsigned char* bytes;
    std::size_t size;
};

// The format holds the years 1980 to 2107; minizip would write nonsense for others.
tm_zip entry_date(std::time_t time) {
    std::tm t = {};
    localtime_r(&time, &t);
    if (t.tm_year < 80) return {0, 0, 0, 1, 0, 1980};
    if (t.tm_year > 207) return {58, 59, 23, 31, 11, 2107};
    return {static_cast<uInt>(t.tm_sec),  static_cast<uInt>(t.tm_min), static_cast<uInt>(t.tm_hour),
            static_cast<uInt>(t.tm_mday), static_cast<uInt>(t.tm_mon), static_cast<uInt>(t.tm_year + 1900)};
}

// A full disk is told as such; minizip itself does not say why a write failed.
int write_error() {
    return errno == ENOSPC || errno == EDQUOT || errno == EFBIG ? errno : err_zip_write;
}

int write_entry(zipFile out, const new_entry& e) {
    const int level = e.method == Z_DEFLATED ? Z_DEFAULT_COMPRESSION : 0;
    if (zipOpenNewFileInZip4_64(out, e.name.c_str(), &e.info, nullptr, 0, nullptr, 0, nullptr, e.method, level, 0,
                                -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, made_on_unix, 0,
                                e.size >= zip64_from) != ZIP_OK)
        return failed_at(write_error(), OOPS_PLACE);
    for (std::size_t at = 0; at < e.size; at += block_size) {
        const auto count = static_cast<unsigned>(std::min(e.size - at, block_size));
        if (zipWriteInFileInZip(out, e.bytes + at, count) != ZIP_OK) return failed_at(write_error(), OOPS_PLACE);
    }
    return zipCloseFileInZip(out) == ZIP_OK ? 0 : failed_at(write_error(), OOPS_PLACE);
}

int write_zip(const std::string& zip, const new_entry& e) {
    const std::string full = app_path + zip;
    const zipFile out = zipOpen64(full.c_str(), APPEND_STATUS_CREATE);
    if (!out) return failed_at(err_zip_create, OOPS_PLACE);
    errno = 0;
    int err = write_entry(out, e);
    if (zipClose(out, nullptr) != ZIP_OK && !err) err = failed_at(write_error(), OOPS_PLACE);
    if (err) unlink(full.c_str());
    return err;
}

int link_to_zip(const std::string& name, const std::string& target, const std::string& zip) {
    new_entry e = {name, 0, {}, reinterpret_cast<const unsigned char*>(target.data()), target.size()};
    e.info.external_fa = link_attributes;
    e.info.tmz_date = {0, 0, 0, 1, 0, 1980};  // so that one link always gives one zip
    return write_zip(zip, e);
}

int data_to_zip(const std::string& name, const std::string& source, const std::string& zip) {
    xmap_class file;
    struct stat st;
    if (!file.retry_exact(source) || fstat(file.file_desc, &st) != 0) return failed_at(err_file_open, OOPS_PLACE);
    new_entry e = {name, Z_DEFLATED, {}, file.mem_start, static_cast<std::size_t>(file.length())};
    e.info.external_fa = static_cast<uLong>(st.st_mode) << 16;
    e.info.tmz_date = entry_date(st.st_mtime);
    return write_zip(zip, e);
}

}  // namespace

int file_to_zip(const std::string& source, const std::string& zip) {
    const std::string name = source.substr(source.rfind('/') + 1);
    std::string target;
    const bool link = is_sim_link(source, &target);
    const int err = link ? link_to_zip(name, target, zip) : data_to_zip(name, source, zip);
    if (err)
        xer << "file_to_zip failed with error " << err << ".\nfile = " << sErrFile << " line = " << sErrLine << "\n";
    return err;
}
