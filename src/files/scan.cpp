#include "files/scan.h"

#include <cstddef>
#include <cstdlib>

#include "files/io_utils.h"
#include "files/xmap.h"
#include "runtime/cmdline.h"

static const int prefs_versions[] = {9001, 0};
static constexpr std::ptrdiff_t longest_line = 64 << 10;

scan_class::scan_class(const std::string& path, int dir) : io_dir(dir) {
    if (dir == scan_write) {
        // A failed open has shown its alert; the writes go nowhere.
        if (ouf_open(path + ouf_beside, file_text, prefs_versions[0], "no-copyright-string")) written_path = path;
        return;
    }
    xmap_class file(path);
    if (!file.check_file(file_text, prefs_versions, nullptr, nullptr)) return;
    while (!file.at_end()) {
        const unsigned char* const line = file.mem_ptr;
        std::string key, value;
        file.TXT_str_scan_space(&key);
        file.TXT_str_scan_eoln(&value);
        // No setting is that long: whatever wrote such a line, it was not this program.
        if (file.mem_ptr - line <= longest_line) tags[key] = value;
    }
}

scan_class::~scan_class() {
    if (!written_path.empty()) ouf_close_onto(written_path);
}

bool scan_class::find_text(const std::string& key, std::string& text) const {
    const std::string option = "--pref:" + key;
    if (cmdline.has_option(option)) {
        text = cmdline.get_option(option);
        return true;
    }
    const auto found = tags.find(key);
    if (found == tags.end()) return false;
    text = found->second;
    return true;
}

int scan_class::int_io(int* value, const std::string& key) {
    if (io_dir == scan_write) {
        ouf << key << " " << *value << "\n";
        return 0;
    }
    std::string text;
    if (!find_text(key, text)) return 0;
    // What atoi does, without its undefined answer to a number out of range.
    *value = static_cast<int>(std::strtol(text.c_str(), nullptr, 10));
    return 1;
}

int scan_class::str_io(std::string* value, const std::string& key) {
    if (io_dir == scan_write) {
        if (!value->empty()) ouf << key << " " << *value << "\n";
        return 0;
    }
    return find_text(key, *value) ? 1 : 0;
}
