// The way into a zip; the way out of one is zip_io.cpp.
#include <minizip/zip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <ctime>

#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "files/zip_io.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

namespace {

constexpr std::size_t block_size = 256u << 10;
constexpr unsigned long link_attributes = 0xa1ed0000;
constexpr unsigned long made_on_unix = 3 << 8 | 20;  // or other programs would not see a mode in the attributes
constexpr std::size_t zip64_from = 0xff000000;       // less than 4 GB by what deflate may add to data it cannot shrink

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
    const std::string name(last_part(source));
    std::string target;
    const bool link = is_sim_link(source, &target);
    const int err = link ? link_to_zip(name, target, zip) : data_to_zip(name, source, zip);
    if (err)
        xer << "file_to_zip failed with error " << err << ".\nfile = " << sErrFile << " line = " << sErrLine << "\n";
    return err;
}
