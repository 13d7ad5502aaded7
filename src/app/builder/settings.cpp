#include "app/builder/settings.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>

#include "builder/copy_check.h"
#include "builder/region.h"
#include "files/xmap.h"
#include "runtime/cmdline.h"
#include "runtime/product.h"
#include "runtime/utf8.h"

namespace fs = std::filesystem;

namespace {

constexpr option_row builder_rows[] = {
    {"--src", "=FOLDER", "The reference copy, which holds All, Macintosh, Windows and Linux.\n"},
    {"--dst", "=FOLDER", "Where the release's own folder is made.\n"},
    {"--old", "=FILE", "The previous release's directory.txt, or the directory.txt.zip that carried it.\n"},
    {"--first_release", nullptr,
     "Says that there is no previous release.  Nothing else lets a network release start\n"
     "without a history.\n"},
    {"--version_number", "=N", "Number of this release, above that of every earlier one.\n"},
    {"--version_name", "=TEXT", "Name of this release and of its folder.\n"},
    {"--jobs", "=N", "Makes N zips at a time.  As a rule one for each processor.\n"},
    {"--console", nullptr, "Runs on the terminal, as it always does.\n"},
    {"--version", nullptr, "Prints the version and the build number.\n"},
};

constexpr std::string_view conf_keys[] = {"dst", "old", "version_number", "version_name"};

struct conf_file {
    std::string path;
    std::string folder;  // ends in "/"
    std::map<std::string, std::string> values;
};

// Each of these returns false, with the reason in `complaint`, where the settings cannot be used.

bool complain(std::string& complaint, const std::string& text) {
    complaint = text;
    return false;
}

// No file is no fault.
bool read_conf(conf_file& conf, std::string& complaint) {
    fs::path copy = fs::absolute(build.src_fold).lexically_normal();
    if (!copy.has_filename()) copy = copy.parent_path();
    conf.folder = (copy.parent_path() / "").string();
    conf.path = conf.folder + "builder.conf";
    xmap_class map;
    if (!map.retry_exact(conf.path)) return true;
    while (!map.at_end()) {
        std::string key, value;
        map.TXT_str_scan_space(&key);
        map.TXT_str_scan_eoln(&value);
        if (key.empty() || key.front() == '#') continue;
        if (std::find(std::begin(conf_keys), std::end(conf_keys), key) == std::end(conf_keys))
            return complain(complaint, "I do not know the key '" + key + "' in " + conf.path);
        value.erase(value.find_last_not_of(" \t") + 1);
        conf.values[key] = value;
    }
    return true;
}

// Of an option, or of the key of its name in the file. Empty when neither says anything.
std::string setting(const conf_file& conf, const std::string& option) {
    if (cmdline.has_option(option)) return cmdline.get_option(option);
    const auto found = conf.values.find(option.substr(2));
    return found == conf.values.end() ? std::string() : found->second;
}

// A path from the file starts from the folder of the file, one from the command line from the current folder. What the
// readers of files cannot take is told now, and not after hours.
bool read_path(const conf_file& conf, const std::string& option, std::string& path, std::string& complaint) {
    path = setting(conf, option);
    if (!path.empty() && !cmdline.has_option(option) && path.front() != '/') path.insert(0, conf.folder);
    if (path.find_first_of(":\\") == std::string::npos) return true;
    return complain(complaint, "the path of " + option + " may hold no ':' and no '\\': " + path);
}

// A folder that is there, with its "/".
bool read_folder(const conf_file& conf, const std::string& option, std::string& path, std::string& complaint) {
    if (!read_path(conf, option, path, complaint)) return false;
    if (path.empty()) return complain(complaint, option + "=FOLDER is missing");
    std::error_code ignored;
    if (!fs::is_directory(path, ignored))
        return complain(complaint, "there is no folder " + path + " (" + option + ")");
    if (path.back() != '/') path += '/';
    return true;
}

// The walk would meet what the run itself writes.
bool check_folders_apart(std::string& complaint) {
    std::error_code ignored;
    const std::string src = (fs::weakly_canonical(build.src_fold, ignored) / "").string();
    const std::string dst = (fs::weakly_canonical(build.dst_fold_base, ignored) / "").string();
    if (!dst.starts_with(src)) return true;
    return complain(complaint, "--dst must not lie in the reference copy: " + build.dst_fold_base);
}

// The one before it, or the word that there is none: a release without its history takes every older file for one that
// the user has changed.
bool read_history(const conf_file& conf, std::string& complaint) {
    build.first_release = cmdline.has_option("--first_release");
    if (!read_path(conf, "--old", build.old_dir_path, complaint)) return false;
    if (is_dvd != 0) return true;  // a disc has no history
    if (build.old_dir_path.empty() && !build.first_release)
        return complain(complaint,
                        "a release needs the directory file of the one before it (--old=FILE), or --first_release");
    if (!build.old_dir_path.empty() && build.first_release)
        return complain(complaint,
                        "there is a previous release (" + build.old_dir_path + "), so --first_release cannot be meant");
    return true;
}

// The number goes into every row; that it is above all earlier ones is seen when the history is read.
bool read_number(const conf_file& conf, std::string& complaint) {
    build.release_number = version_number;
    const std::string text = setting(conf, "--version_number");
    if (text.empty()) return true;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), build.release_number);
    if (error == std::errc() && end == text.data() + text.size() && build.release_number > 0) return true;
    return complain(complaint, "--version_number wants a number from 1 to 2147483647, and not '" + text + "'");
}

bool read_jobs(std::string& complaint) {
    const std::string text = cmdline.has_option("--jobs") ? cmdline.get_option("--jobs") : "0";
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), build.jobs);
    if (error == std::errc() && end == text.data() + text.size() && build.jobs >= 0 && build.jobs <= 1000) return true;
    return complain(complaint, "--jobs wants a number from 1 to 1000, and not '" + text + "'");
}

// It becomes the name of a folder, here and on the user's disk.
bool read_name(const conf_file& conf, std::string& complaint) {
    const std::string name = setting(conf, "--version_name");
    build.release_name = name.empty() ? version_text : name;
    if (build.release_name.ends_with(unfinished_ending))
        return complain(complaint, "--version_name must not end in '" + std::string(unfinished_ending) +
                                       "', as the folder of a release in work does");
    if (!fault_of_name(build.release_name) && build.release_name.front() != '.' && build.release_name.back() != ' ')
        return true;
    return complain(complaint,
                    "--version_name becomes the name of a folder, which '" + printable(name) + "' cannot be");
}

}  // namespace

const option_table builder_options = {
    "VELARIS BUILDER\n"
    "Makes a release: a folder with one zip for each file of a reference copy, and the\n"
    "directory file with the history of each.",
    builder_rows,
    "What is not said on the command line is looked up in builder.conf, a file beside the\n"
    "reference copy with lines such as 'dst /srv/releases'; its keys are dst, old,\n"
    "version_number and version_name.  q or Ctrl-C stops a run.\n"
    "\n"
    "Exit status: 0 complete, 1 failed or stopped with q, 2 wrong usage, 5 another run is at\n"
    "work on this folder, 130 interrupted, 143 ended by SIGTERM.\n",
    nullptr};

bool read_builder_settings(std::string& complaint) {
    conf_file conf;
    return read_folder(conf, "--src", build.src_fold, complaint) && read_conf(conf, complaint) &&
           read_folder(conf, "--dst", build.dst_fold_base, complaint) && check_folders_apart(complaint) &&
           read_history(conf, complaint) && read_number(conf, complaint) && read_name(conf, complaint) &&
           read_jobs(complaint);
}
