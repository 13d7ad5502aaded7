// The way into a zip; the way out of one is zip_io.cpp.
#include <libdeflate.h>
#include <minizip/zip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <span>

#include "files/error_str.h"
#include "files/file_reader.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/zip_io.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/thread.h"

namespace {

constexpr std::size_t block_size = 256u << 10;
constexpr unsigned long link_attributes = 0xa1ed0000;
constexpr unsigned long made_on_unix = 3 << 8 | 20;  // or other programs would not see a mode in the attributes
constexpr std::size_t zip64_from = 0xff000000;       // less than 4 GB by what deflate may add to data it cannot shrink

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

// One entry being written: its bytes go by once, and are signed on their way.
struct new_entry {
    std::string name;
    int method;
    zip_fileinfo info;
    std::uint64_t size;                                                       // as far as it is known before
    std::function<std::ptrdiff_t(unsigned char* to, std::size_t room)> read;  // 0 at the end, below 0 a failure
    zipped_file& done;

    // `raw`: what is written is deflated already, and its length and checksum are told at the end.
    int open_in(zipFile out, int level, bool raw) const {
        return zipOpenNewFileInZip4_64(out, name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, method, level, raw,
                                       -MAX_WBITS, DEF_MEM_LEVEL, Z_DEFAULT_STRATEGY, nullptr, 0, made_on_unix, 0,
                                       size >= zip64_from);
    }
};

// A file that is small enough is packed in memory, which takes half the time. How much more of it there is than what
// was expected shows only at its end; then all is done by blocks.
constexpr std::uint64_t most_packed_at_once = 64u << 20;

// Memory of a thread for one file after the other: the first touch of a fresh page costs more than packing its bytes.
class reused_bytes {
  public:
    unsigned char* at_least(std::size_t count) {
        if (count > room) {
            bytes = std::make_unique_for_overwrite<unsigned char[]>(count);
            room = count;
        }
        return bytes.get();
    }

  private:
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t room = 0;
};
thread_local reused_bytes unpacked_bytes, packed_bytes;

typedef std::span<const unsigned char> bytes_t;

// The whole of the entry, if it is no larger than expected; else what was read so far.
bytes_t read_expected(const new_entry& e, bool& whole) {
    const std::size_t room = static_cast<std::size_t>(e.size) + 1;
    unsigned char* const bytes = unpacked_bytes.at_least(room);
    std::size_t have = 0;
    std::ptrdiff_t got = 0;
    while (have < room && (got = e.read(bytes + have, room - have)) > 0)
        have += static_cast<std::size_t>(got);
    whole = have < room;
    return {bytes, have};
}

int write_packed(zipFile out, const new_entry& e, bytes_t bytes) {
    constexpr int level = 5;  // the fastest that makes zips no larger than zlib does as a rule
    thread_local const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor*)> packer(
        libdeflate_alloc_compressor(level), libdeflate_free_compressor);
    if (!packer) return failed_at(ENOMEM, OOPS_PLACE);
    const std::size_t room = libdeflate_deflate_compress_bound(packer.get(), bytes.size());
    unsigned char* const packed = packed_bytes.at_least(room);
    const std::size_t length = libdeflate_deflate_compress(packer.get(), bytes.data(), bytes.size(), packed, room);
    e.done.bytes = bytes.size();
    e.done.signature = md5_of({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
    errno = 0;
    if (length == 0 || e.open_in(out, level, true) != ZIP_OK ||
        zipWriteInFileInZip(out, packed, static_cast<unsigned>(length)) != ZIP_OK ||
        zipCloseFileInZipRaw64(out, bytes.size(), libdeflate_crc32(0, bytes.data(), bytes.size())) != ZIP_OK)
        return failed_at(write_error(), OOPS_PLACE);
    return 0;
}

int write_entry(zipFile out, const new_entry& e) {
    bytes_t begun;  // what was read in the hope that it is all
    if (e.method == Z_DEFLATED && e.size <= most_packed_at_once) {
        bool whole = false;
        begun = read_expected(e, whole);
        if (whole) return write_packed(out, e, begun);
    }
    if (e.open_in(out, e.method == Z_DEFLATED ? Z_DEFAULT_COMPRESSION : 0, false) != ZIP_OK)
        return failed_at(write_error(), OOPS_PLACE);
    MD5_CTX context;
    MD5Init(&context);
    const auto write = [&](bytes_t bytes) {
        const auto count = static_cast<unsigned>(bytes.size());
        MD5UpdateWide(&context, bytes.data(), count);
        e.done.bytes += count;
        errno = 0;
        return zipWriteInFileInZip(out, bytes.data(), count) == ZIP_OK ? 0 : failed_at(write_error(), OOPS_PLACE);
    };
    int err = begun.empty() ? 0 : write(begun);
    const auto block = std::make_unique<unsigned char[]>(block_size);
    for (std::ptrdiff_t got = 0; !err && (got = e.read(block.get(), block_size)) > 0;)
        err = write({block.get(), static_cast<std::size_t>(got)});
    if (err) return err;
    MD5Final(&context);
    e.done.signature = md5_hex(context);
    return zipCloseFileInZip(out) == ZIP_OK ? 0 : failed_at(write_error(), OOPS_PLACE);
}

// A zip that could not be finished is not left: it would look like one.
int write_zip(const std::string& zip, const new_entry& e) {
    const std::string full = app_path + zip;
    const zipFile out = zipOpen64(full.c_str(), APPEND_STATUS_CREATE);
    if (!out) return failed_at(err_zip_create, OOPS_PLACE);
    int err = write_entry(out, e);
    if (zipClose(out, nullptr) != ZIP_OK && !err) err = failed_at(write_error(), OOPS_PLACE);
    if (err) unlink(full.c_str());
    return err;
}

int link_to_zip(const std::string& name, std::string_view target, const std::string& zip, zipped_file& done) {
    zip_fileinfo info = {};
    info.external_fa = link_attributes;
    info.tmz_date = {0, 0, 0, 1, 0, 1980};  // so that one link always gives one zip
    const auto read = [&target](unsigned char* to, std::size_t room) {
        const std::size_t count = target.copy(reinterpret_cast<char*>(to), room);
        target.remove_prefix(count);
        return static_cast<std::ptrdiff_t>(count);
    };
    return write_zip(zip, {name, 0, info, target.size(), read, done});
}

int data_to_zip(const std::string& name, const std::string& source, const std::string& zip, zipped_file& done) {
    file_reader file(app_path + source, file_reader::last_link::refused);
    if (file.error()) return failed_at(file.error() == ENOENT ? int{err_file_open} : file.error(), OOPS_PLACE);
    const struct stat& facts = file.facts();
    zip_fileinfo info = {};
    info.external_fa = static_cast<uLong>(facts.st_mode) << 16;
    info.tmz_date = entry_date(facts.st_mtime);
    // The end of the run waits for the workers.
    const auto read = [&file](unsigned char* to, std::size_t room) {
        return THREAD_is_ending() ? -1 : file.read(to, room);
    };
    const int err = write_zip(zip, {name, Z_DEFLATED, info, static_cast<std::uint64_t>(facts.st_size), read, done});
    if (err) return err;
    if (!file.error() && !file.changed_meanwhile() && !THREAD_is_ending()) return 0;
    unlink((app_path + zip).c_str());
    return failed_at(file.error() ? file.error() : err_file_changed, OOPS_PLACE);
}

}  // namespace

int file_to_zip(const std::string& source, const std::string& zip, zipped_file* facts) {
    const std::string name(last_part(source));
    std::string target;
    zipped_file done;
    const int err =
        is_sim_link(source, &target) ? link_to_zip(name, target, zip, done) : data_to_zip(name, source, zip, done);
    if (err)
        xer << "file_to_zip failed with error " << err << ".\nfile = " << sErrFile << " line = " << sErrLine << "\n";
    else if (facts)
        *facts = done;
    return err;
}
