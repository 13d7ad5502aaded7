#include "files/scan.h"

#include <cstdlib>

#include "files/io_utils.h"
#include "files/xmap.h"
#include "runtime/cmdline.h"

static const int prefs_versions[] = {9001, 0};

scan_class::scan_class(const std::string& path, int dir) : io_dir(dir) {
    if (dir == scan_write) {
        // A failed open has shown its alert; the writes go nowhere.
        ouf_open(path, file_text, prefs_versions[0], "no-copyright-string");
        return;
    }
    xmap_class file(path);
    if (!file.check_file(file_text, prefs_versions, nullptr, nullptr)) return;
    while (!file.at_end()) {
        std::string key, value;
        file.TXT_str_scan_space(&key);
        file.TXT_str_scan_eoln(&value);
        tags[key] = value;
    }
}

scan_class::~scan_class() {
    if (io_dir == scan_write) ouf.close();
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
