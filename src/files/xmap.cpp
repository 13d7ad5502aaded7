#include "files/xmap.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <new>

#include "files/file_reader.h"
#include "files/io_utils.h"
#include "runtime/hl_string.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/utf8.h"

int mapped_files_open = 0;

static void fatal(int line, const char* line1, const char* line2, const std::string& line3, const std::string& line4) {
    __MACIBM_alert(0, line1, line2, line3, line4, t_exit, "HLutils/OOPS_cpp/xmap", line);
}

// Both are a caller's mistakes, which nothing here mends: an absolute path handed on, and another system's separators.
static void check_path(const std::string& path) {
    if (!app_path.empty() && path.find(app_path) != std::string::npos)
        __MACIBM_alert(0, "retry: We are getting a file string that is not Orbisuite relative!",
                       "This is illegal! All paths must be Orbisuite relative!", "The path in question is:", path,
                       t_exit, "HLutils/OOPS_cpp/xmap", 122);
    if (path.find_first_of("\\:") != std::string::npos)
        fatal(128, "OOPS!", "I got a bad dirchar! I only want '/'!", "The path in question is:", path);
}

xmap_class::xmap_class(const std::string& path) {
    if (!path.empty()) retry(path);
}

const unsigned char* xmap_class::retry(const std::string& path) {
    return take_in(path, false);
}

const unsigned char* xmap_class::retry_exact(const std::string& path) {
    return take_in(path, true);
}

const unsigned char* xmap_class::take_in(const std::string& path, bool exact) {
    check_path(path);
    char full[path_buffer_size];
    copy_to_path_buffer(full, app_path + path);
    if (g_case_sensitive && !exact) findPath(full);

    // What this object held before goes first.
    if (mem_start) --mapped_files_open;
    held.reset();
    mem_start = mem_ptr = mem_end = nullptr;

    file_reader file(full);
    err = file.error();
    if (err) return nullptr;
    const auto size = static_cast<std::size_t>(file.facts().st_size);
    held.reset(new (std::nothrow) unsigned char[std::max<std::size_t>(size, 1)]);  // an empty file has a place too
    if (!held) {
        err = ENOMEM;
        fatal(172, "Xmapped out of memory", "c_path=", full, float_text("errno=", err));
        return nullptr;
    }
    const std::ptrdiff_t got = file.read(held.get(), size);
    if (got < 0) {
        err = file.error();
        held.reset();
        xer << "Mem file error.  Err=" << err << ", file=" << printable(full) << "\n";
        return nullptr;
    }
    ++mapped_files_open;
    mem_start = mem_ptr = held.get();
    mem_end = mem_start + got;
    return mem_start;
}

static bool is_listed(int version, const int* versions) {
    for (; *versions; ++versions)
        if (*versions == version) return true;
    return false;
}

// A text's first line is taken as a whole by its first byte; the letter tells the byte order of binary files alone.
int xmap_class::check_file(int type, const int* versions, const char* magic, std::string* rest) {
    if (length() == 0) return 0;
    mem_ptr = mem_start;
    if (type != file_binary && type != file_text) fatal(12, "Bad check_file type!", "", "", "");
    std::int32_t version = 0;
    const unsigned char letter = *mem_ptr++;
    if (type == file_binary) {
        if (letter != 'a' && letter != 'i') return 0;
        constexpr bool little = std::endian::native == std::endian::little;
        rev_bytes = (letter == 'a') == little;
        if (mem_end - mem_ptr >= 4) read_n_rev(&version, 4);
    } else {
        TXT_eoln_skip();
        if (letter != 'A' && letter != 'I') return 0;
        version = TXT_int_scan();
        TXT_str_scan_eoln(rest);
    }
    if (!is_listed(version, versions)) return 0;
    if (magic) {
        if (!match_word(magic, is_white)) return 0;
        TXT_eoln_skip();
    }
    return version;
}

void xmap_class::read_n_rev(void* dest, long n) {
    if (n < 0 || n > mem_end - mem_ptr) fatal(53, "Invalid read_n_rev read!", "", "", "");
    std::memcpy(dest, mem_ptr, static_cast<std::size_t>(n));
    mem_ptr += n;
    if (!rev_bytes) return;
    auto* bytes = static_cast<unsigned char*>(dest);
    for (long i = 0; i + 4 <= n; i += 4)
        std::reverse(bytes + i, bytes + i + 4);
}

int xmap_class::io_file_open(int mode, const std::string& path, const int* versions, int type) {
    io_mode = mode;
    if (mode == 1) return ouf_open(path, type, versions[0], "no-copyright-string");
    if (mode == 0) return retry(path) && check_file(type, versions, nullptr, nullptr) != 0;
    return 0;
}

void xmap_class::io_file_close() {
    if (io_mode == 1) ouf.close();
}

void xmap_class::TXT_str_scan_space(std::string* out) {
    TXT_space_skip();
    const unsigned char* from = mem_ptr;
    while (mem_ptr < mem_end && !is_white(*mem_ptr))
        ++mem_ptr;
    if (out) out->assign(from, mem_ptr);
}

void xmap_class::TXT_str_scan_eoln(std::string* out) {
    TXT_space_skip();
    const unsigned char* from = mem_ptr;
    while (mem_ptr < mem_end && !is_line_end(*mem_ptr))
        ++mem_ptr;
    if (out) out->assign(from, mem_ptr);
    while (mem_ptr < mem_end && is_white(*mem_ptr))
        ++mem_ptr;
}

void xmap_class::TXT_xer_line() {
    // Whichever end the lines have, the larger count is theirs; both agree for CR LF.
    const auto line = 1 + std::max(std::count(mem_start, mem_ptr, 13), std::count(mem_start, mem_ptr, 10));
    const auto ends_line = [](unsigned char c) { return c == 13 || c == 10; };
    const unsigned char* from = mem_ptr;
    while (from > mem_start && !ends_line(from[-1]))
        --from;
    // The excerpt is cut at the first small "n", not at a line feed: support reads logs of all releases by this form.
    const unsigned char* to = std::find_if(mem_ptr, mem_end, [](unsigned char c) { return c == 13 || c == 'n'; });
    xer << line << " \"" << std::string(from, to) << "\"\n" << std::flush;
}
