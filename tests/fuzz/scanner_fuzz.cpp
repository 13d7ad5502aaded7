// The text scanner. The first line of the input is what to do, a letter each; the rest is the file.
#include <algorithm>
#include <iterator>

#include "files/xmap.h"
#include "fuzz/fuzz.h"

static void act(xmap_class& file, char what) {
    static const int versions[] = {820, 900, 9001, 0};
    std::string text;
    unsigned char block[13];
    switch (what) {
        case 'h':
            file.check_file(file_text, versions, "INSTALLER", &text);
            break;
        case 'b':
            file.check_file(file_binary, versions, nullptr, nullptr);
            break;
        case 's':
            file.TXT_space_skip();
            break;
        case 'l':
            file.TXT_eoln_skip();
            break;
        case 't':
            file.TXT_str_scan_space(&text);
            must(std::none_of(text.begin(), text.end(), [](char c) { return is_white(static_cast<unsigned char>(c)); }),
                 "a token holds no white byte");
            break;
        case 'e':
            file.TXT_str_scan_eoln(&text);
            break;
        case 'i':
            file.TXT_int_scan();
            break;
        case 'm':
            file.TXT_token_match("FILE");
            break;
        case 'd':
            file.TXT_token_match_blank("DIR");
            break;
        case 'x':
            file.TXT_xer_line();
            break;
        default:
            file.read_n_rev(block, std::ssize(block) - (static_cast<unsigned char>(what) & 7));
    }
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input = view_of(data, size);
    const std::size_t line = std::min(input.find('\n'), size);
    const memory_file bytes(input.substr(std::min(line + 1, size)));
    survives([&] {
        xmap_class file(bytes.path());
        for (const char what : input.substr(0, line)) {
            const std::int64_t before = file.offset();
            act(file, what);
            must(file.offset() >= 0 && file.offset() <= file.length(), "the cursor stays in the file");
            must(file.offset() >= before || what == 'h' || what == 'b', "the cursor never goes back");
        }
    });
    return 0;
}
