#include "builder/settings.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <map>
#include <string_view>

#include "builder/region.h"
#include "files/xmap.h"
#include "runtime/cmdline.h"
#include "runtime/product.h"

namespace fs = std::filesystem;

const char* const builder_usage =
    "\n"
    "VELARIS BUILDER\n"
    "Makes a release: a folder with one zip for each file of a reference copy, and the\n"
    "directory file with the history of each.\n"
    "--src=FOLDER\n"
    "The reference copy, which holds All, Macintosh, Windows and Linux.\n"
    "--dst=FOLDER\n"
    "Where the release's own folder is made.\n"
    "--old=FILE\n"
    "The previous release's directory.txt, or the directory.txt.zip that carried it.\n"
    "--first_release\n"
    "Says that there is no previous release.  Nothing else lets a network release start\n"
    "without a history.\n"
    "--version_number=N\n"
    "Number of this release, which no earlier one may have had.\n"
    "--version_name=TEXT\n"
    "Name of this release and of its folder.\n"
    "--console\n"
    "Runs on the terminal, as it always does.\n"
    "--version\n"
    "Prints the version and the build number.\n"
    "\n"
    "What is not said on the command line is looked up in builder.conf, a file beside the\n"
    "reference copy with lines such as 'dst /srv/releases'; its keys are dst, old,\n"
    "version_number and version_name.  q or Ctrl-C stops a run.\n"
    "\n"
    "Exit status: 0 complete, 1 failed or stopped with q, 2 wrong usage, 5 another run is at\n"
    "work on this folder, 130 interrupted.\n";

namespace {

constexpr std::string_view options[] = {
    "--src",     "--dst",     "--old",   "--first_release", "--version_number", "--version_name",
    "--console", "--version", "--cmnds", "--fps_test",      "--help",           "-h"};
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

// A misspelled option would be without effect, which in a release is found out too late.
bool check_options(int argc, char* const* argv, std::string& complaint) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        const std::string_view name = argument.substr(0, argument.find('='));
        if (std::find(std::begin(options), std::end(options), name) == std::end(options))
            return complain(complaint, "I do not know '" + std::string(argument) + "'");
        if (argument.ends_with('=')) return complain(complaint, std::string(name) + " wants a value behind the '='");
    }
    return true;
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

// Empty when neither the command line nor the file says anything.
std::string setting(const conf_file& conf, const std::string& key) {
    if (cmdline.has_option("--" + key)) return cmdline.get_option("--" + key);
    const auto found = conf.values.find(key);
    return found == conf.values.end() ? std::string() : found->second;
}

bool read_path(const conf_file& conf, const std::string& key, std::string& path, std::string& complaint) {
    path = setting(conf, key);
    if (!path.empty() && !cmdline.has_option("--" + key) && path.front() != '/') path.insert(0, conf.folder);
    if (path.find_first_of(":\\") == std::string::npos) return true;
    return complain(complaint, "the path of --" + key + " may hold no ':' and no '\\': " + path);
}

bool read_folder(const conf_file& conf, const std::string& key, std::string& path, std::string& complaint) {
    if (!read_path(conf, key, path, complaint)) return false;
    if (path.empty()) return complain(complaint, "--" + key + "=FOLDER is missing");
    std::error_code ignored;
    if (!fs::is_directory(path, ignored)) return complain(complaint, "there is no folder " + path + " (--" + key + ")");
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

bool read_history(const conf_file& conf, std::string& complaint) {
    build.first_release = cmdline.has_option("--first_release");
    if (!read_path(conf, "old", build.old_dir_path, complaint)) return false;
    if (is_dvd != 0) return true;  // a disc has no history
    if (build.old_dir_path.empty() && !build.first_release)
        return complain(complaint,
                        "a release needs the directory file of the one before it (--old=FILE), or --first_release");
    if (!build.old_dir_path.empty() && build.first_release)
        return complain(complaint,
                        "there is a previous release (" + build.old_dir_path + "), so --first_release cannot be meant");
    return true;
}

bool read_number(const conf_file& conf, std::string& complaint) {
    build.release_number = version_number;
    const std::string text = setting(conf, "version_number");
    if (text.empty()) return true;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), build.release_number);
    if (error == std::errc() && end == text.data() + text.size() && build.release_number > 0) return true;
    return complain(complaint, "--version_number wants a number from 1 to 2147483647, and not '" + text + "'");
}

// It becomes the name of a folder, here and on the user's disk.
bool read_name(const conf_file& conf, std::string& complaint) {
    const std::string name = setting(conf, "version_name");
    build.release_name = name.empty() ? version_text : name;
    const bool has_control = std::any_of(name.begin(), name.end(), [](char c) { return (c & ~31) == 0 || c == 127; });
    if (!has_control && name.find_first_of("/\\:") == std::string::npos && build.release_name.front() != '.' &&
        build.release_name.back() != ' ')
        return true;
    return complain(complaint, "--version_name becomes the name of a folder, which '" + name + "' cannot be");
}

}  // namespace

bool read_builder_settings(int argc, char* const* argv, std::string& complaint) {
    conf_file conf;
    return check_options(argc, argv, complaint) && read_folder(conf, "src", build.src_fold, complaint) &&
           read_conf(conf, complaint) && read_folder(conf, "dst", build.dst_fold_base, complaint) &&
           check_folders_apart(complaint) && read_history(conf, complaint) && read_number(conf, complaint) &&
           read_name(conf, complaint);
}
