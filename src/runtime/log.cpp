#include "runtime/log.h"

#include <ios>

#include "platform/folders.h"
#include "platform/machine.h"
#include "runtime/product.h"

std::ofstream xer;

static std::string folder_of_log;

static bool open_in(const std::string& folder) {
    if (folder.empty()) return false;
    xer.open(folder + "Log.txt", std::ios::out | std::ios::trunc);
    if (!xer.is_open()) return false;
    folder_of_log = folder;
    return true;
}

void open_log() {
    xer.close();
    folder_of_log.clear();
    std::string folder;
    get_OS_abs_path(is_dvd ? os_dir_desktop : os_dir_this_app, &folder);
    if (!open_in(folder)) open_in(state_folder());
    xer << std::fixed;
}

std::string log_folder() {
    return folder_of_log;
}

void write_log_header() {
    const machine_facts machine = get_machine_facts();
    xer << "log.txt for " << version_text << " Installer " << version_number << " compiled on " << build_date << "\n\n"
        << "This log file is generated automatically by Tarvex applications and contains diagnostics about your "
           "graphics "
           "hardware, installation, and any error conditions.\n"
        << "If you need to contact tech support or file a bug, please send us this file. NOTE: this file is rewritten "
           "every time you start ANY of your Orbisuite applications.\n\n"
        << "Linux " << machine.os_release << "\n"
        << "CPU type: " << machine.cpu_code << " (" << machine.cpu_name << ") "
        << "CPU speed (mhz): " << machine.cpu_mhz << " Bus speed (mhz): " << machine.bus_mhz
        << " RAM (MB): " << machine.ram_mb << "\n"
        << "\nOrbisuite folder:'" << app_path << "', case sensitive=" << g_case_sensitive << "\n\n"
        << std::flush;
}
