// xmap.h: the one reader of data files: the bytes of a whole file in memory and a cursor with a few tokenising
// operations. There is no line buffer and no copying; only a string that is asked for is allocated. The file is read,
// not mapped (file_reader.h); what is to be read once and may be large goes by blocks instead.
//
// Header of a text file: a line "I" (or "A"), then a line with the version, a blank and "version"; a third line may
// name the kind of file. Of a binary file: one byte, "i" little-endian or "a" big-endian, then the version in four
// bytes.
// Bytes: TAB and SP are blank; NUL, CR and LF end a line; both kinds are white. Only mem_end ends the data.
// Errors: a missing file leaves mem_start null and is no alert; a mistaken path or a lack of memory is a fatal alert.
// Ownership: the bytes live as long as the object; pointers into them must not outlive it.
// Threads: one object, one thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "files/file_kind.h"

extern int mapped_files_open;  // files taken in, less those given up by re-pointing; never used for a decision

class xmap_class {
  public:
    explicit xmap_class(const std::string& path = std::string());
    xmap_class(const xmap_class&) = delete;
    xmap_class& operator=(const xmap_class&) = delete;

    // Opens and reads `path`, given relative to the product's folder; the case of its components is mended where the
    // volume minds case. Returns mem_start, null when the file cannot be read or is no regular file: error() then
    // tells. An empty file gives equal, non-null pointers.
    const unsigned char* retry(const std::string& path);
    // The same for the exact spelling: what installs, deletes or compares must not take one name for another.
    const unsigned char* retry_exact(const std::string& path);
    int error() const { return err; }  // of the last retry; as file_reader's

    // Applies the header convention. `versions` ends at its first 0. Returns the version found, 0 on any mismatch.
    // `magic` may be null; `rest`, if not null, gets the text behind the version number.
    int check_file(int type, const int* versions, const char* magic, std::string* rest);
    void read_n_rev(void* dest, long n);  // past the end: fatal alert. Reverses 32-bit words when rev_bytes is 1

    int io_file_open(int mode, const std::string& path, const int* versions, int type);  // mode 0 read, 1 write
    void io_file_close();

    void TXT_space_skip();
    void TXT_eoln_skip();                       // to the next line end, then over all white bytes
    void TXT_str_scan_space(std::string* out);  // a token; the cursor stays on the delimiter
    void TXT_str_scan_eoln(std::string* out);   // the rest of the line, then over all white bytes
    int TXT_int_scan();                         // no test for digits; wraps
    bool TXT_token_match(const char* word);     // the word and a white byte (or the end) behind it
    // As above, but the byte behind must be a blank: a keyword with arguments.
    bool TXT_token_match_blank(const char* word);
    void TXT_xer_line();  // the current line, with its number, to the log

    bool at_end() const { return mem_ptr >= mem_end; }
    std::int64_t length() const { return mem_end - mem_start; }
    std::int64_t offset() const { return mem_ptr - mem_start; }

    std::int32_t rev_bytes = 0;
    std::string file_name;  // for messages; empty
    std::int32_t io_mode = 0;
    const unsigned char* mem_start = nullptr;
    const unsigned char* mem_ptr = nullptr;
    const unsigned char* mem_end = nullptr;

  private:
    const unsigned char* take_in(const std::string& path, bool exact);
    std::unique_ptr<unsigned char[]> held;
    int err = 0;
    bool match_word(const char* word, bool (*accepts)(unsigned char));
};

inline bool is_blank(unsigned char c) {
    return c == 9 || c == 32;
}
inline bool is_line_end(unsigned char c) {
    return c == 0 || c == 13 || c == 10;
}
inline bool is_white(unsigned char c) {
    return is_blank(c) || is_line_end(c);
}

inline void xmap_class::TXT_space_skip() {
    while (mem_ptr < mem_end && is_blank(*mem_ptr))
        ++mem_ptr;
}

inline void xmap_class::TXT_eoln_skip() {
    while (mem_ptr < mem_end && !is_line_end(*mem_ptr))
        ++mem_ptr;
    while (mem_ptr < mem_end && is_white(*mem_ptr))
        ++mem_ptr;
}

inline int xmap_class::TXT_int_scan() {
    TXT_space_skip();
    std::uint32_t sign = 1;
    if (mem_ptr < mem_end && *mem_ptr == '-') {
        ++mem_ptr;
        sign = ~std::uint32_t{0};
    }
    if (mem_ptr < mem_end && *mem_ptr == '+') {
        ++mem_ptr;
        sign = 1;
    }
    std::uint32_t value = 0;
    for (; mem_ptr < mem_end && !is_white(*mem_ptr); ++mem_ptr)
        value = value * 10 + (*mem_ptr - std::uint32_t{48});
    return static_cast<std::int32_t>(sign * value);
}

inline bool xmap_class::match_word(const char* word, bool (*accepts)(unsigned char)) {
    TXT_space_skip();
    const std::size_t n = std::strlen(word);
    const std::size_t left = static_cast<std::size_t>(mem_end - mem_ptr);
    if (left < n || std::memcmp(mem_ptr, word, n) != 0) return false;
    if (left > n && !accepts(mem_ptr[n])) return false;
    mem_ptr += n;
    return true;
}

inline bool xmap_class::TXT_token_match(const char* word) {
    return match_word(word, is_white);
}

inline bool xmap_class::TXT_token_match_blank(const char* word) {
    const unsigned char* before = mem_ptr;
    if (match_word(word, is_blank) && mem_ptr < mem_end) return true;
    mem_ptr = before;
    TXT_space_skip();
    return false;
}
