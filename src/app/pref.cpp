#include "app/pref.h"

#include <string>

#include "engine/stg.h"
#include "files/scan.h"
#include "net/proxy.h"
#include "platform/folders.h"
#include "runtime/oops.h"

pref_class pref;
display_prefs_t display_prefs;

// Empty when there is no folder for the user's preferences.
static std::string set_path(int set) {
    if (set == pref_display) return "Resources/preferences/Res Orbisuite.prf";
    std::string folder;
    get_OS_abs_path(os_dir_prefs, &folder);
    return folder.empty() ? folder : folder + "Velaris Installer.prf";
}

static void io_display(scan_class& file, display_prefs_t& d) {
    if (file.io_dir == scan_write) {
        d.prefs_found = 1;
        d.x_res_req_ALL = d.window_dx;
        d.y_res_req_ALL = d.window_dy;
    }
    file.int_io(&d.x_res_req_PLN, "_x_res_req_PLN");
    file.int_io(&d.y_res_req_PLN, "_y_res_req_PLN");
    file.int_io(&d.x_res_req_WRL, "_x_res_req_WRL");
    file.int_io(&d.y_res_req_WRL, "_y_res_req_WRL");
    file.int_io(&d.x_res_req_ALL, "_x_res_req_ALL");
    file.int_io(&d.y_res_req_ALL, "_y_res_req_ALL");
    if (file.io_dir == scan_read) {
        d.window_dx = d.x_res_req_ALL;
        d.window_dy = d.y_res_req_ALL;
    }
    file.int_io(&d.col_res_req, "_col_res_req");
    file.int_io(&d.set_res, "_set_res");
    file.int_io(&d.lang, "_lang");
    file.int_io(&d.alias_req, "_alias_req");
    file.int_io(&d.keylist_up, "_keylist_up");
    file.int_io(&d.sec_mon_inuse, "_sec_mon_inuse");
    file.int_io(&d.prefs_found, "_prefs_found");
    if (d.x_res_req_ALL < 600 || d.x_res_req_ALL > 9999) d.x_res_req_ALL = 1024;
    if (d.y_res_req_ALL < 600 || d.y_res_req_ALL > 9999) d.y_res_req_ALL = 768;
}

static void io_installer(scan_class& file) {
    file.int_io(&stg.use_max_cpu, "_use_max_cpu");
    file.int_io(&stg.rename_folder, "_rename_folder");
    file.int_io(&stg.stream_count, "_stream_count");
    file.int_io(&stg.log_actions, "_log_actions");
    file.int_io(&stg.always_ask_dir, "_always_ask_dir");
    file.str_io(&dest_dir_path, "_dest_dir_path");
    file.str_io(&proxy.proxy_host, "_proxy_host");
    file.str_io(&proxy.proxy_port_str, "_proxy_port");
    file.int_io(&proxy.proxy_port, "_proxy_port_int");
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
    if (set == pref_display)
        io_display(file, display_prefs);
    else
        io_installer(file);
}
