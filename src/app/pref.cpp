#include "app/pref.h"

#include <algorithm>
#include <span>
#include <string>

#include "engine/stg.h"
#include "files/scan.h"
#include "net/http.h"
#include "net/proxy.h"
#include "platform/folders.h"
#include "runtime/oops.h"

pref_class pref;
display_prefs_t display_prefs;
int window_scale = 0;

// Empty when there is no folder for the user's preferences.
static std::string set_path(int set) {
    if (set == pref_display) return "Resources/preferences/Res Orbisuite.prf";
    std::string folder;
    get_OS_abs_path(os_dir_prefs, &folder);
    return folder.empty() ? folder : folder + "Velaris Installer.prf";
}

// A setting by its key in the file: a number or a text.
struct setting {
    const char* key;
    int* number;
    std::string* text;
};

// Set 10, in the order of the file.
static const setting display_settings[] = {
    {"_x_res_req_PLN", &display_prefs.x_res_req_PLN, nullptr},
    {"_y_res_req_PLN", &display_prefs.y_res_req_PLN, nullptr},
    {"_x_res_req_WRL", &display_prefs.x_res_req_WRL, nullptr},
    {"_y_res_req_WRL", &display_prefs.y_res_req_WRL, nullptr},
    {"_x_res_req_ALL", &display_prefs.x_res_req_ALL, nullptr},
    {"_y_res_req_ALL", &display_prefs.y_res_req_ALL, nullptr},
    {"_col_res_req", &display_prefs.col_res_req, nullptr},
    {"_set_res", &display_prefs.set_res, nullptr},
    {"_lang", &display_prefs.lang, nullptr},
    {"_alias_req", &display_prefs.alias_req, nullptr},
    {"_keylist_up", &display_prefs.keylist_up, nullptr},
    {"_sec_mon_inuse", &display_prefs.sec_mon_inuse, nullptr},
    {"_prefs_found", &display_prefs.prefs_found, nullptr},
};

// Set 11, in the order of the file.
static const setting installer_settings[] = {
    {"_use_max_cpu", &stg.use_max_cpu, nullptr},
    {"_rename_folder", &stg.rename_folder, nullptr},
    {"_stream_count", &stg.stream_count, nullptr},
    {"_log_actions", &stg.log_actions, nullptr},
    {"_always_ask_dir", &stg.always_ask_dir, nullptr},
    {"_dest_dir_path", nullptr, &dest_dir_path},
    {"_proxy_host", nullptr, &proxy.proxy_host},
    {"_proxy_port", nullptr, &proxy.proxy_port_str},
    {"_proxy_port_int", &proxy.proxy_port, nullptr},
    {"_limit_rate", &http.limit.bytes_a_second, nullptr},
    {"_scale", &window_scale, nullptr},
};

static std::span<const setting> settings_of(int set) {
    if (set == pref_display) return display_settings;
    return installer_settings;
}

bool pref_class::has_setting(const std::string& key) const {
    const auto named = [&](const setting& one) { return one.key == key; };
    return std::any_of(std::begin(display_settings), std::end(display_settings), named) ||
           std::any_of(std::begin(installer_settings), std::end(installer_settings), named);
}

void pref_class::IO_set(int set, int dir) {
    const std::string path = set_path(set);
    if (path.empty()) {
        if (dir == scan_write)
            __MACIBM_alert(
                0, "I could not save your preferences!",
                "The folder for them, velaris in XDG_CONFIG_HOME or in .config of your home folder, cannot be "
                "made.",
                "Look whether something else stands in its place, or whether it may not be written.", "", t_alert,
                OOPS_PLACE);
        return;
    }
    scan_class file(path, dir);
    display_prefs_t& d = display_prefs;
    if (set == pref_display && dir == scan_write) {
        d.prefs_found = 1;
        d.x_res_req_ALL = d.window_dx;
        d.y_res_req_ALL = d.window_dy;
    }
    for (const setting& one : settings_of(set)) {
        if (one.number) file.int_io(one.number, one.key);
        // A line end, as the name of a home folder may have one, would make another setting of what stands behind it.
        const bool breaks_the_line = one.text && one.text->find_first_of("\r\n") != std::string::npos;
        if (one.text && !(dir == scan_write && breaks_the_line)) file.str_io(one.text, one.key);
    }
    if (set != pref_display) return;
    if (dir == scan_read) {
        d.window_dx = d.x_res_req_ALL;
        d.window_dy = d.y_res_req_ALL;
    }
    if (d.x_res_req_ALL < 600 || d.x_res_req_ALL > 9999) d.x_res_req_ALL = 1024;
    if (d.y_res_req_ALL < 600 || d.y_res_req_ALL > 9999) d.y_res_req_ALL = 768;
}
