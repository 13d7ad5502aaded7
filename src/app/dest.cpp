#include "app/dest.h"

#include <unistd.h>

#include <array>
#include <climits>
#include <vector>

#include "engine/stg.h"
#include "files/io_utils.h"
#include "files/opensave.h"
#include "platform/folders.h"

static int no_chooser(const std::string&, const std::string&, const std::string&, std::string&) {
    return 0;
}

folder_chooser choose_folder = no_chooser;

std::string folder_argument(const std::string& text) {
    std::string path = text;
    char here[PATH_MAX];
    if (!path.starts_with('/') && getcwd(here, sizeof here)) path = std::string(here) + "/" + path;
    while (path.ends_with("//"))
        path.pop_back();
    if (!path.ends_with('/')) path += '/';
    return path;
}

static std::string without_last_component(const std::string& path) {
    std::string parent;
    get_path_with_path(parent, path);
    return parent.empty() ? path : parent;
}

std::string default_destination() {
    std::string parent;
    get_OS_abs_path(os_dir_default_apps, &parent);
    // No folder lies deeper than this below the root of its volume.
    constexpr int depth = 10;
    std::string root = parent;
    for (int i = 0; i < depth; ++i)
        root = without_last_component(root);
    // An ordinary user cannot write there on Linux; the unstripped folder serves then.
    return (folder_is_writable(root) ? root : parent) + "Velaris/";
}

bool folder_is_a_sim(const std::string& path) {
    static const std::array<const char*, 4> wanted = {"Airfoils", "Instructions", "Output", "Resources"};
    if (path.empty()) return false;
    std::vector<std::string> names;
    std::vector<int> kinds;
    opensave_getitems(path, kind_any, names, kinds);
    for (const char* word : wanted) {
        bool seen = false;
        for (std::size_t i = 0; i < names.size() && !seen; ++i)
            seen = kinds[i] == kind_folder && names[i].find(word) != std::string::npos;
        if (!seen) return false;
    }
    return true;
}

int path_is_to_a_sim() {
    return folder_is_a_sim(dest_dir_path);
}

int pick_dest_path() {
    std::string chosen;
    if (!choose_folder(
            "Pick a folder to install Velaris to! Be sure to pick your existing folder if you already have one!",
            "This is my Velaris destination", dest_dir_path, chosen) ||
        chosen.empty())
        return 0;
    dest_dir_path = chosen;
    if (chosen != "/") dest_dir_path += "/";
    if (!path_is_to_a_sim()) dest_dir_path += "Velaris/";
    return 1;
}
