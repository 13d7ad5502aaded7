#include "app/options.h"

#include "net/down.h"
#include "runtime/cmdline.h"
#include "runtime/product.h"

const char* const installer_usage =
    "\n"
    "VELARIS INSTALLER\n"
    "-path FOLDER\n"
    "Installs to FOLDER.  Stands first, before all other options.\n"
    "--console\n"
    "Runs on the terminal, with no window.\n"
    "--list_host=HOST[:PORT]\n"
    "The host that the list of servers is fetched from.\n"
    "--target_os=1|2|3\n"
    "The system to install for: 1 Macintosh, 2 Windows, 3 Linux.\n"
    "--agree\n"
    "Agrees to the licence, so that it is not asked on the terminal.\n"
    "--changed=ask|keep|overwrite|cancel\n"
    "What to do with files that you changed.  On a terminal you are asked, otherwise\n"
    "such a file cancels the installation.\n"
    "--check\n"
    "Only compares the folder with the release and prints what would be done.\n"
    "--give_up=SECONDS\n"
    "Ends when no file was finished for so long.  Without it a run tries for ever.\n"
    "--quiet\n"
    "Shows no progress.\n"
    "--json\n"
    "Prints one JSON object a line and nothing else.\n"
    "--pref:KEY=VALUE\n"
    "Sets a preference, such as --pref:_stream_count=2.\n"
    "--version\n"
    "Prints the version and the build number.\n"
    "\n"
    "Exit status: 0 complete or already the latest, 1 failed, 2 wrong usage, 3 declined\n"
    "or cancelled, 4 gave up, 5 another run is at work on this folder, 130 interrupted.\n";

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
