#include "files/zip_large.h"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <vector>

#include "files/error_str.h"
#include "files/file_reader.h"
#include "files/io_utils.h"
#include "runtime/bytes.h"
#include "runtime/oops.h"
#include "runtime/product.h"

static constexpr ZPOS64_T mark = 0xffffffff;
static constexpr std::size_t block_size = 256u << 10;

bool mend_large_sizes(unzFile zip, unz_file_info64& info) {
    if (info.uncompressed_size != mark && info.compressed_size != mark) return false;
    std::vector<unsigned char> extra(info.size_file_extra + 1);
    unzGetCurrentFileInfo64(zip, nullptr, nullptr, 0, extra.data(), info.size_file_extra, nullptr, 0);
    // Records of an id, a length and as many bytes. That of id 1 holds eight bytes for each mark, in this order.
    for (std::size_t at = 0; at + 4 <= info.size_file_extra;) {
        const ZPOS64_T id = little_word(&extra[at], 2);
        const std::size_t end = at + 4 + little_word(&extra[at + 2], 2);
        at += 4;
        if (id == 1 && end <= info.size_file_extra) {
            for (ZPOS64_T* size : {&info.uncompressed_size, &info.compressed_size}) {
                if (*size != mark || at + 8 > end) continue;
                *size = little_word<ZPOS64_T>(&extra[at], 8);
                at += 8;
            }
            return true;
        }
        at = end;
    }
    return false;
}

namespace {

// What goes by, held against what the headers claim; more than that is never handed on.
struct entry_sum {
    const block_sink& sink;
    ZPOS64_T limit;  // what the headers claim
    ZPOS64_T size = 0;
    uLong crc = 0;

    int take(const unsigned char* bytes, std::size_t count) {
        size += count;
        if (size > limit) return failed_at(err_zip_read, OOPS_PLACE);
        crc = crc32(crc, bytes, static_cast<uInt>(count));
        return sink(bytes, count);
    }
};

// The compressed bytes of an entry, block by block; an archive that ends before them is a bad one.
struct packed_bytes {
    file_reader& file;
    ZPOS64_T left;
    std::vector<unsigned char> block = std::vector<unsigned char>(block_size);

    // How many are in `block` now; 0 at the end.
    int next(std::size_t& count) {
        const std::ptrdiff_t got = file.read(block.data(), std::min<ZPOS64_T>(left, block_size));
        if (got < 0) return failed_at(file.error(), OOPS_PLACE);
        if (got == 0 && left > 0) return failed_at(err_zip_read, OOPS_PLACE);
        count = static_cast<std::size_t>(got);
        left -= count;
        return 0;
    }
};

int copy_stored(packed_bytes& from, entry_sum& sum) {
    std::size_t count = 1;
    int err = 0;
    while (!err && count > 0) {
        err = from.next(count);
        if (!err) err = sum.take(from.block.data(), count);
    }
    return err;
}

int inflate_all(packed_bytes& from, entry_sum& sum) {
    std::vector<unsigned char> block(block_size);
    z_stream z = {};
    if (inflateInit2(&z, -MAX_WBITS) != Z_OK) return failed_at(ENOMEM, OOPS_PLACE);
    int err = 0, state = Z_OK;
    while (!err && state == Z_OK) {
        if (z.avail_in == 0) {
            std::size_t count = 0;
            err = from.next(count);
            if (err) break;
            z.next_in = from.block.data();
            z.avail_in = static_cast<uInt>(count);
        }
        z.next_out = block.data();
        z.avail_out = block_size;
        state = inflate(&z, Z_NO_FLUSH);
        err = sum.take(block.data(), block_size - z.avail_out);
    }
    inflateEnd(&z);
    if (!err && state != Z_STREAM_END) err = failed_at(err_zip_read, OOPS_PLACE);
    return err;
}

}  // namespace

int read_large_entry(unzFile zip, const std::string& path, const unz_file_info64& info, const block_sink& sink) {
    int method = 0;
    int err = unzOpenCurrentFile2(zip, &method, nullptr, 1);
    if (err != UNZ_OK) return failed_at(err, OOPS_PLACE);
    const ZPOS64_T from = unzGetCurrentFileZStreamPos64(zip);
    unzCloseCurrentFile(zip);
    file_reader file(app_path + path);
    if (file.error()) return failed_at(file.error(), OOPS_PLACE);
    const auto length = static_cast<ZPOS64_T>(file.facts().st_size);
    if (from > length || info.compressed_size > length - from) return failed_at(err_zip_read, OOPS_PLACE);
    lseek(file.descriptor(), static_cast<off_t>(from), SEEK_SET);
    packed_bytes data = {file, info.compressed_size};
    entry_sum sum = {sink, info.uncompressed_size};
    err = method == 0 ? copy_stored(data, sum) : inflate_all(data, sum);
    if (!err && sum.size != sum.limit) err = failed_at(err_zip_read, OOPS_PLACE);
    if (!err && sum.crc != info.crc) err = failed_at(UNZ_CRCERROR, OOPS_PLACE);
    return err;
}
