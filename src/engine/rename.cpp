#include "engine/rename.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string>

#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "files/io_utils.h"
#include "net/server_list.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/log.h"
#include "runtime/oops.h"

static bool holds_a_copy() {
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const std::string& signature = current_row(file).sig_have;
        if (signature != "NONE" && signature_was_shipped(file, signature)) return true;
    }
    return false;
}

// Folders without a file may be ours, made for an agreement that was refused.
static bool holds_a_file(const std::filesystem::directory_entry& entry) {
    std::error_code error;
    if (entry.is_symlink(error) || !entry.is_directory(error)) return true;
    const std::filesystem::recursive_directory_iterator items(entry.path(), error);
    return error || std::any_of(begin(items), end(items), [](const std::filesystem::directory_entry& item) {
               std::error_code ignored;
               return item.is_symlink(ignored) || !item.is_directory(ignored);
           });
}

void note_what_else_is_there() {
    std::error_code error;
    const std::filesystem::directory_iterator items(way_to_destination(), error);
    const bool other_things =
        !error && std::any_of(begin(items), end(items), [](const std::filesystem::directory_entry& entry) {
            return !entry.path().filename().string().starts_with(own_prefix) && holds_a_file(entry);
        });
    if (other_things && !holds_a_copy()) destination_folder()->append(name_stays_note, "");
}

// Of what the path leads to, as a folder may have several names.
static bool is_same_folder(const struct stat& facts, const std::string& path) {
    struct stat other;
    return stat(path.c_str(), &other) == 0 && other.st_dev == facts.st_dev && other.st_ino == facts.st_ino;
}

// Why the folder keeps its name; null if it need not.
static const char* reason_to_stay(const std::string& name) {
    struct stat facts, above;
    if (name.empty() || name.find_first_of("/:\\") != std::string::npos || name == "." || name == "..")
        return "the release has no name that a folder can have";
    if (stat(way_to_destination().c_str(), &facts) != 0 || dest_dir_path.size() < 2) return "it is a root";
    const std::string parent(folder_of(dest_dir_path));
    if (stat(parent.c_str(), &above) != 0 || above.st_dev != facts.st_dev) return "it is a mount point";
    if (is_same_folder(facts, parent)) return "it is a root";
    for (const std::string& folder : user_folders())
        if (is_same_folder(facts, folder)) return "it is one of the user's own folders";
    struct stat note;
    if (destination_folder()->look(name_stays_note, note) == 0) return "it held other things before the first install";
    return nullptr;
}

void rename_destination() {
    const std::string& name = server_list.install_name;
    const std::string parent(folder_of(dest_dir_path)), old_name(without_slash(last_part(dest_dir_path)));
    if (old_name == name) return;
    if (const char* reason = reason_to_stay(name)) {
        xer << dest_dir_path << " keeps its name, as " << reason << ".\n";
        return;
    }
    const int result = rename_file(parent, old_name, name);
    xer << "RENAMING " << dest_dir_path << " to " << name << ", with result=" << result << ".\n";
    if (result != 0) return;
    dest_dir_path = parent + name + "/";
    // A run that ends here without its settings would find nothing at the old name, and fetch everything again.
    if (alert_front.save_settings) alert_front.save_settings();
    keep_signatures();
    front.destination_renamed();
}
