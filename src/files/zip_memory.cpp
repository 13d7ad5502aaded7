#include "files/zip_memory.h"

#include <algorithm>
#include <cstring>

namespace {

// minizip opens "files" by a name that is handed through to the function that opens: here, the bytes.
struct open_bytes {
    std::span<const unsigned char> bytes;
    std::size_t at = 0;
};

void* open_it(void* opaque, const void*, int) {
    return new open_bytes{*static_cast<const std::span<const unsigned char>*>(opaque)};
}

uLong read_it(void*, void* stream, void* to, uLong size) {
    open_bytes& file = *static_cast<open_bytes*>(stream);
    const std::size_t count = std::min<std::size_t>(size, file.bytes.size() - file.at);
    std::memcpy(to, file.bytes.data() + file.at, count);
    file.at += count;
    return count;
}

uLong refuse_to_write(void*, void*, const void*, uLong) {
    return 0;
}

ZPOS64_T tell_it(void*, void* stream) {
    return static_cast<open_bytes*>(stream)->at;
}

long seek_it(void*, void* stream, ZPOS64_T offset, int origin) {
    open_bytes& file = *static_cast<open_bytes*>(stream);
    const std::size_t from = origin == ZLIB_FILEFUNC_SEEK_SET   ? 0
                             : origin == ZLIB_FILEFUNC_SEEK_CUR ? file.at
                                                                : file.bytes.size();
    // What an archive says of places in it may be anything.
    if (offset > file.bytes.size() - from) return -1;
    file.at = from + static_cast<std::size_t>(offset);
    return 0;
}

int close_it(void*, void* stream) {
    delete static_cast<open_bytes*>(stream);
    return 0;
}

int no_error(void*, void*) {
    return 0;
}

}  // namespace

unzFile unzip_open_memory(std::span<const unsigned char> bytes) {
    zlib_filefunc64_def functions = {open_it, read_it, refuse_to_write, tell_it, seek_it, close_it, no_error, &bytes};
    return unzOpen2_64("", &functions);
}
