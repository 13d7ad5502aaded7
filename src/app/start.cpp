#include "app/start.h"

#include <unistd.h>

#include <climits>
#include <cstring>

#include "app/dest.h"
#include "app/pref.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "net/down.h"
#include "platform/folders.h"
#include "runtime/cmdline.h"
#include "runtime/log.h"

static std::string folder_of(int which) {
    std::string path;
    get_OS_abs_path(which, &path);
    return path;
}

static void log_folders() {
    xer << "os_dir_this_app\t\t=" << folder_of(os_dir_this_app) << '\n';
    xer << "os_dir_desktop\t\t=" << folder_of(os_dir_desktop) << '\n';
    xer << "os_dir_default_apps\t=" << folder_of(os_dir_default_apps) << '\n';
    xer << "os_dir_temp\t\t\t=" << folder_of(os_dir_temp) << '\n';
    xer << "os_dir_prefs\t\t\t=" << folder_of(os_dir_prefs) << "\n\n";
}

// The folder as the user sees it: from the current folder where it is relative, and with its "/".
static std::string folder_argument(const char* text) {
    std::string path = text;
    if (path.empty()) return path;
    char here[PATH_MAX];
    if (path[0] != '/' && getcwd(here, sizeof here)) path = std::string(here) + "/" + path;
    if (path.back() != '/') path += "/";
    return path;
}

void app_start(int argc, char* const* argv) {
    log_folders();
    dest_dir_path = default_destination();
    xer << "dest_dir_path=" << dest_dir_path << '\n';
    flow_start();
    pref.IO_set(pref_installer, scan_read);
    if (argc > 2 && std::strcmp(argv[1], "-path") == 0)
        dest_dir_path = folder_argument(argv[2]);
    else if (stg.always_ask_dir)
        pick_dest_path();
}

bool list_host_option(std::string& host, std::string& problem) {
    host = default_list_host;
    if (!cmdline.has_option("--list_host")) return true;
    host = cmdline.get_option("--list_host");
    if (host_port_is_valid(host)) return true;
    problem = "--list_host wants HOST or HOST:PORT with a port from 1 to 65535, and not '" + host + "'";
    return false;
}

bool target_os_option(int& target_os, std::string& problem) {
    if (!cmdline.has_option("--target_os")) return true;
    const std::string value = cmdline.get_option("--target_os");
    if (value == "1" || value == "2" || value == "3") {
        target_os = value[0] - '0';
        return true;
    }
    problem = "--target_os wants 1 (Macintosh), 2 (Windows) or 3 (Linux), and not '" + value + "'";
    return false;
}
