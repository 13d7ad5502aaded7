#include "engine/backup.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <ctime>

#include "engine/directory.h"
#include "engine/examine.h"
#include "platform/beneath.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/utf8.h"

static std::string today() {
    const std::time_t now = std::time(nullptr);
    std::tm date = {};
    localtime_r(&now, &date);
    char text[32];
    std::strftime(text, sizeof text, "%Y-%m-%d", &date);
    return text;
}

// The name with `addition` before its ending, cut to what a disk takes.
static std::string name_with(const std::string& name, const std::string& addition) {
    const std::size_t dot = name.rfind('.');
    const bool has_ending = dot != std::string::npos && dot > 0 && name.size() - dot <= 16;
    const std::string ending = has_ending ? name.substr(dot) : "";
    const std::string stem = name.substr(0, name.size() - ending.size());
    std::size_t room = std::min(stem.size(), NAME_MAX - addition.size() - ending.size());
    while (room > 0 && room < stem.size() && is_utf8_tail(stem[room]))
        --room;
    return stem.substr(0, room) + addition + ending;
}

// Now also there, or there alone where the disk knows no two names of one file.
static int keep_copy_beside(const beneath_folder& root, const std::string& path, std::string& kept) {
    constexpr int most_copies = 10'000;  // of one file on one day
    const std::string folder(folder_of(path)), name(last_part(path)), mark = " (mine " + today() + ")";
    for (int number = 1; number < most_copies; ++number) {
        kept = folder + name_with(name, number == 1 ? mark : mark + " " + std::to_string(number));
        const int err = root.keep_as(path, kept);
        if (err != EEXIST) return err;
    }
    return EEXIST;
}

int keep_copy_if_wanted(std::size_t file) {
    file_version_struct& row = current_row(file);
    if (!row.keep_copy) return 0;
    const std::string installed = installed_path(row);
    const auto root = destination_folder();
    std::string kept;
    const int err = keep_copy_beside(*root, installed, kept);
    xer << "KEEPING a copy of " << destination_of(row) << " as " << last_part(kept) << ", with result=" << err << ".\n";
    if (err) return err;
    row.keep_copy = 0;
    note_own_change(file);
    return 0;
}
