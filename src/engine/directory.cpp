#include "engine/directory.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <unordered_map>
#include <unordered_set>

#include "engine/front.h"
#include "engine/stg.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/xmap.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/oops.h"
#include "runtime/product.h"

std::vector<file_history_struct> sim_info;
std::set<std::string> deleted_files;
int this_install_has_exes = 0;

// Histories that meet in one file. What a question needs of all of them is put together at the first one, so that many
// histories of one file cost no more than as many files.
struct meeting {
    std::vector<std::size_t> files;
    bool prepared = false;
    std::unordered_set<std::string_view> shipped;  // signatures
    bool is_wanted = false;                        // by one that is not withdrawn
};

// What the rows have in common; made anew with every catalogue.
static struct {
    std::vector<meeting> meetings;
    std::unordered_map<std::size_t, std::size_t> meeting_of;  // only files that meet others
    contested_t contested;
} knitted;

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

bool path_is_inside(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

int want_this_f(int file, int row, int set) {
    const file_version_struct& v = sim_info[static_cast<std::size_t>(file)][static_cast<std::size_t>(row)];
    return v.disc_set == set && is_wanted(v);
}

bool is_wanted(const file_version_struct& row) {
    return row.platform == stg.target_os || row.platform == 0 || (row.platform == 6 && stg.target_os == 3);
}

static meeting* meeting_with(std::size_t file) {
    const auto found = knitted.meeting_of.find(file);
    return found == knitted.meeting_of.end() ? nullptr : &knitted.meetings[found->second];
}

static const meeting& prepared(meeting& all) {
    if (all.prepared) return all;
    all.prepared = true;
    for (const std::size_t file : all.files) {
        for (const file_version_struct& row : sim_info[file])
            all.shipped.insert(row.sig_want);
        all.is_wanted |= !is_gone(current_row(file)) && is_wanted(current_row(file));
    }
    return all;
}

const std::vector<std::size_t>& same_file(std::size_t file) {
    static const std::vector<std::size_t> none;
    const meeting* all = meeting_with(file);
    return all ? all->files : none;
}

void join_histories(const std::vector<std::size_t>& files) {
    std::set<std::size_t> joined;
    for (const std::size_t file : files) {
        joined.insert(file);
        joined.insert(same_file(file).begin(), same_file(file).end());
    }
    for (const std::size_t file : joined)
        knitted.meeting_of[file] = knitted.meetings.size();
    knitted.meetings.emplace_back().files.assign(joined.begin(), joined.end());
}

bool signature_was_shipped(std::size_t file, const std::string& signature) {
    const file_history_struct& history = sim_info[file];
    if (std::any_of(history.begin(), history.end(),
                    [&](const file_version_struct& row) { return row.sig_want == signature; }))
        return true;
    meeting* all = meeting_with(file);
    return all && prepared(*all).shipped.contains(signature);
}

bool lives_on_elsewhere(std::size_t file) {
    meeting* all = meeting_with(file);
    return all && prepared(*all).is_wanted;
}

const contested_t& contested_paths() {
    return knitted.contested;
}

bool behind_shipped_link(std::string_view installed) {
    if (knitted.contested.empty()) return false;
    for (installed = folder_of(installed); !installed.empty(); installed = folder_of(installed)) {
        const auto found = knitted.contested.find(without_slash(installed));
        if (found == knitted.contested.end()) continue;
        const std::string full = way_to_destination() + found->first;
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

static bool is_signature(std::string_view text) {
    return text == "GONE" ||
           (text.size() == 32 && text.find_first_not_of("0123456789abcdef") == std::string_view::npos);
}

// Why no honest release has this row; null if it may have.
static const char* fault_of(const file_version_struct& row) {
    const std::string_view installed = installed_view(row);
    if (!path_stays_below(installed)) return "a path that leaves the folder I install to!";
    // Other systems take these two for the end of a folder's name or of a disk's.
    if (installed.find_first_of(":\\") != std::string_view::npos) return "a path with ':' or '\\' in it!";
    if (installed.size() >= path_buffer_size) return "a path that is too long for any disk!";
    for (const std::string_view part : path_parts(installed)) {
        if (part.size() > NAME_MAX) return "a path that is too long for any disk!";
        if (part.starts_with(own_prefix)) return "a name that I keep for myself!";
    }
    return is_signature(row.sig_want) ? nullptr : "a file without a proper signature!";
}

static bool refuse(const std::string& what, const std::string& path) {
    __MACIBM_alert(0, "I am reading the directory text file and found " + what,
                   "I will not install anything from this directory file. Try again later, or with another server.",
                   "It is:", path.size() < path_buffer_size ? path : path.substr(0, path_buffer_size / 2) + "...",
                   t_alert, OOPS_PLACE);
    return false;
}

// Joins the row to the history before it, if that is of the same path, or starts one. False for a row such as one that
// would leave the destination: with it the whole catalogue is not to be trusted.
static bool take_row(file_version_struct& row, const std::string& path) {
    if (path.ends_with('/'))
        __MACIBM_alert(0, "I am reading the directory text file and found a path that has no file!",
                       "This is impossible to download or delete!", "It is:", path, t_exit, OOPS_PLACE);
    row.path = path;
    if (const char* fault = fault_of(row)) return refuse(fault, path);
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
            if (++rows > most_rows) return refuse("more rows than any release has!", path);
            if (rows_read++ % 500 == 0)
                front.dir_progress_bar(0, static_cast<float>(map.offset()), static_cast<float>(map.length()),
                                       scan_phase::reading_catalogue, label, name);
        } else {
            map.TXT_eoln_skip();
        }
    }
    return true;
}

typedef std::unordered_map<std::string_view, std::size_t> path_index;  // installed path to the first that has it

static path_index index_shared_paths() {
    path_index first_at;
    first_at.reserve(sim_info.size());
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const auto [at, is_new] = first_at.try_emplace(installed_view(current_row(file)), file);
        if (is_new) continue;
        const auto [place, first_meeting] = knitted.meeting_of.try_emplace(at->second, knitted.meetings.size());
        if (first_meeting) knitted.meetings.emplace_back().files.push_back(at->second);
        knitted.meetings[place->second].files.push_back(file);
        knitted.meeting_of[file] = place->second;
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
            if (found == first_at.end() || knitted.contested.contains(found->first)) continue;
            const std::vector<std::size_t>& all = same_file(found->second);
            knitted.contested[std::string(found->first)] = all.empty() ? std::vector<std::size_t>{found->second} : all;
        }
    }
}

static void forget_catalogue() {
    deleted_files.clear();
    sim_info.clear();
    knitted = {};
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
