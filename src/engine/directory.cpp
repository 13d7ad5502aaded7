#include "engine/directory.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <unordered_map>

#include "engine/front.h"
#include "engine/stg.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/xmap.h"
#include "platform/paths.h"
#include "runtime/oops.h"
#include "runtime/product.h"

std::vector<file_history_struct> sim_info;
std::set<std::string> deleted_files;
int this_install_has_exes = 0;

static std::unordered_map<int, int> first_of_sharing;      // only files that share their installed path
static std::unordered_map<int, std::vector<int>> sharing;  // by the first of them
static contested_t contested;

constexpr int most_rows = 4'000'000;  // a server must not be able to fill the memory with them

std::string_view installed_view(const file_version_struct& row) {
    const std::string_view path = row.path;
    const std::size_t slash = path.find('/');
    return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string installed_path(const file_version_struct& row) {
    return std::string(installed_view(row));
}

std::string destination_of(const file_version_struct& row) {
    return dest_dir_path + installed_path(row);
}

beneath_folder destination_folder() {
    return beneath_folder(dest_dir_path);
}

bool path_is_inside(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

int want_this_f(int file, int row, int set) {
    const file_version_struct& v = sim_info[static_cast<std::size_t>(file)][static_cast<std::size_t>(row)];
    if (v.disc_set != set) return 0;
    if (v.platform == stg.target_os || v.platform == 0) return 1;
    return v.platform == 6 && stg.target_os == 3;
}

bool is_wanted(int file) {
    const file_history_struct& history = sim_info[static_cast<std::size_t>(file)];
    return want_this_f(file, static_cast<int>(history.size()) - 1, history.back().disc_set) != 0;
}

const std::vector<int>& same_installed_path(int file) {
    static const std::vector<int> none;
    const auto first = first_of_sharing.find(file);
    return first == first_of_sharing.end() ? none : sharing.at(first->second);
}

static bool has_row_with(int file, const std::string& signature) {
    const file_history_struct& history = sim_info[static_cast<std::size_t>(file)];
    return std::any_of(history.begin(), history.end(),
                       [&](const file_version_struct& row) { return row.sig_want == signature; });
}

bool signature_was_shipped(int file, const std::string& signature) {
    if (has_row_with(file, signature)) return true;
    const std::vector<int>& all = same_installed_path(file);
    return std::any_of(all.begin(), all.end(), [&](int one) { return has_row_with(one, signature); });
}

const contested_t& contested_paths() {
    return contested;
}

bool behind_shipped_link(std::string_view installed) {
    if (contested.empty()) return false;
    for (installed = folder_of(installed); !installed.empty(); installed = folder_of(installed)) {
        const auto found = contested.find(without_slash(installed));
        if (found == contested.end()) continue;
        const std::string full = dest_dir_path + found->first;
        std::string signature;
        if (is_sim_link(full, nullptr) && calc_file_md5(full, signature) == 0 &&
            signature_was_shipped(found->second.front(), signature))
            return true;
    }
    return false;
}

void new_format(const std::string& path) {
    __MACIBM_alert(0,
                   "OK I am checking the Tarvex servers and I am finding file formats that are newer than I can "
                   "understand!",
                   "In other words, you need to get a new installer!",
                   std::string("No problem... grab it at the download section of ") + maker_site, path, t_alert,
                   OOPS_PLACE);
    go_to_URL(download_page_url);
    stg.install_state = install_over;
    app_done = 1;
}

// The two large texture sets that never enter an install over the net. Only the row's own name counts.
static bool is_dropped(const std::string& name) {
    return is_net && (name.find("900 red terrain") != std::string::npos ||
                      name.find("Earth Orbit Textures") != std::string::npos);
}

// The seven fields behind the keyword FILE.
static void scan_row(xmap_class& map, file_version_struct& row, std::string& name) {
    row.disc_set = std::clamp(map.TXT_int_scan(), 0, 4);
    row.platform = std::clamp(map.TXT_int_scan(), 0, 6);
    row.version = map.TXT_int_scan();
    row.zip_size = static_cast<float>(std::max(map.TXT_int_scan(), 0));
    row.ext_size = static_cast<float>(std::max(map.TXT_int_scan(), 0));
    map.TXT_str_scan_space(&row.sig_want);
    map.TXT_str_scan_eoln(&name);
}

// A path that stays in the destination and that a disk can hold.
static bool is_installable(std::string_view installed) {
    if (!path_stays_below(installed) || installed.size() >= path_buffer_size) return false;
    for (const std::string_view part : path_parts(installed))
        if (part.size() > NAME_MAX) return false;
    return true;
}

static bool refuse(const char* first, const std::string& path) {
    __MACIBM_alert(0, first,
                   "I will not install anything from this directory file. Try again later, or with another server.",
                   "It is:", path.size() < path_buffer_size ? path : path.substr(0, path_buffer_size / 2) + "...",
                   t_alert, OOPS_PLACE);
    return false;
}

// Joins the row to the history before it, if that is of the same path, or starts one. False for a path that would leave
// the destination: with such a row the whole catalogue is not to be trusted.
static bool take_row(file_version_struct& row, const std::string& path) {
    if (path.ends_with('/'))
        __MACIBM_alert(0, "I am reading the directory text file and found a path that has no file!",
                       "This is impossible to download or delete!", "It is:", path, t_exit, OOPS_PLACE);
    row.path = path;
    if (!path_stays_below(installed_view(row)))
        return refuse("I am reading the directory text file and found a path that leaves the folder I install to!",
                      path);
    // Other systems take these two for the end of a folder's name or of a disk's.
    if (path.find_first_of(":\\") != std::string::npos)
        return refuse("I am reading the directory text file and found a path with ':' or '\\' in it!", path);
    if (!is_installable(installed_view(row)))
        return refuse("I am reading the directory text file and found a path that is too long for any disk!", path);
    if (sim_info.empty() || sim_info.back().back().path != path) sim_info.emplace_back();
    sim_info.back().push_back(std::move(row));
    return true;
}

static bool read_body(xmap_class& map, const std::string& label) {
    static unsigned rows_read = 0;  // of the whole run
    std::string folder, name, path;
    int rows = 0;
    while (!map.at_end()) {
        if (map.TXT_token_match_blank("DIR")) {
            map.TXT_str_scan_eoln(&folder);
        } else if (map.TXT_token_match_blank("FILE")) {
            file_version_struct row;
            scan_row(map, row, name);
            path.assign(folder).append(name);
            if (!is_dropped(name) && !take_row(row, path)) return false;
            if (++rows > most_rows)
                return refuse("I am reading the directory text file and found more rows than any release has!", path);
            if (rows_read++ % 500 == 0)
                front.dir_progress_bar(0, static_cast<float>(map.offset()), static_cast<float>(map.length()),
                                       scan_phase::reading_catalogue, label, name);
        } else {
            map.TXT_eoln_skip();
        }
    }
    return true;
}

typedef std::unordered_map<std::string_view, int> path_index;  // installed path to the first history that has it

static path_index index_shared_paths() {
    path_index first_at;
    first_at.reserve(sim_info.size());
    for (std::size_t i = 0; i < sim_info.size(); ++i) {
        const int file = static_cast<int>(i);
        const auto [at, is_new] = first_at.try_emplace(installed_view(sim_info[i].back()), file);
        if (is_new) continue;
        std::vector<int>& all = sharing[at->second];
        if (all.empty()) all.push_back(at->second);
        all.push_back(file);
        first_of_sharing[at->second] = first_of_sharing[file] = at->second;
    }
    return first_at;
}

// Files of one folder stand together as a rule, so a folder is mostly looked at once.
static void index_contested_paths(const path_index& first_at) {
    std::string_view last_folder;
    for (const file_history_struct& history : sim_info) {
        const std::string_view path = installed_view(history.back());
        std::string_view folder = folder_of(path);
        if (folder == last_folder) continue;
        last_folder = folder;
        for (; !folder.empty(); folder = folder_of(folder)) {
            const auto found = first_at.find(without_slash(folder));
            if (found == first_at.end()) continue;
            const std::vector<int>& all = same_installed_path(found->second);
            contested[std::string(found->first)] = all.empty() ? std::vector<int>{found->second} : all;
        }
    }
}

static void forget_catalogue() {
    deleted_files.clear();
    sim_info.clear();
    first_of_sharing.clear();
    sharing.clear();
    contested.clear();
    stg.down_size = stg.disk_size = 0;
}

int read_catalogue(const std::string& dir_path, const std::string& label) {
    static const int versions[] = {840, 900, 0};
    forget_catalogue();
    xmap_class map(dir_path);
    if (!map.mem_start)
        __MACIBM_alert(0, "I tried to read a directory file that does not exist!", "The file is:", dir_path, "", t_exit,
                       OOPS_PLACE);
    if (!map.check_file(file_text, versions, "INSTALLER", nullptr)) {
        if (is_net) new_format(dir_path);
        return dir_failed;
    }
    if (!read_body(map, label)) {
        forget_catalogue();
        return dir_failed;
    }
    index_contested_paths(index_shared_paths());
    return dir_ready;
}
