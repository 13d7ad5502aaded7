#include "files/zip_large.h"

#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <memory>
#include <vector>

#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "runtime/bytes.h"
#include "runtime/oops.h"

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

int copy_stored(const unsigned char* from, ZPOS64_T size, entry_sum& sum) {
    int err = 0;
    for (ZPOS64_T at = 0; !err && at < size; at += block_size)
        err = sum.take(from + at, std::min<ZPOS64_T>(size - at, block_size));
    return err;
}

int inflate_all(const unsigned char* from, ZPOS64_T size, entry_sum& sum) {
    const std::unique_ptr<unsigned char[]> block(new (std::nothrow) unsigned char[block_size]);
    z_stream z = {};
    if (!block || inflateInit2(&z, -MAX_WBITS) != Z_OK) return failed_at(ENOMEM, OOPS_PLACE);
    z.next_in = const_cast<Bytef*>(from);
    int err = 0, state = Z_OK;
    while (!err && state == Z_OK) {
        const auto input = static_cast<uInt>(std::min<ZPOS64_T>(size, 1u << 30));
        z.avail_in = input;
        z.next_out = block.get();
        z.avail_out = block_size;
        state = inflate(&z, Z_NO_FLUSH);
        size -= input - z.avail_in;
        err = sum.take(block.get(), block_size - z.avail_out);
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
    xmap_class file;
    if (!file.retry_exact(path)) return failed_at(err_zip_open, OOPS_PLACE);
    const auto length = static_cast<ZPOS64_T>(file.length());
    if (from > length || info.compressed_size > length - from) return failed_at(err_zip_read, OOPS_PLACE);
    entry_sum sum = {sink, info.uncompressed_size};
    const unsigned char* data = file.mem_start + from;
    err = method == 0 ? copy_stored(data, info.compressed_size, sum) : inflate_all(data, info.compressed_size, sum);
    if (!err && sum.size != sum.limit) err = failed_at(err_zip_read, OOPS_PLACE);
    if (!err && sum.crc != info.crc) err = failed_at(UNZ_CRCERROR, OOPS_PLACE);
    return err;
}
