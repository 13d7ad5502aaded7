// The command line: the arguments of a run, one a line.
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "app/console/options.h"
#include "app/options.h"
#include "app/pref.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "fuzz/fuzz.h"
#include "net/server_address.h"
#include "runtime/cmdline.h"
#include "support/scratch.h"

static void check_options(int argc, char* const* argv, bool on_terminal) {
    for (const wrong_option& wrong : wrong_options(argc, argv, installer_options))
        must(!wrong.problem.empty() && wrong.problem.find('\n') == std::string::npos,
             "what is wrong is told in one line");
    console_options options;
    std::string problem;
    if (!read_console_options(on_terminal, options, problem)) {
        must(!problem.empty() && problem.find('\n') == std::string::npos, "wrong usage is told in one line");
        return;
    }
    must(problem.empty(), "there is no word about a right use");
    must(options.target_os >= 1 && options.target_os <= 3, "the system is one of three");
    must(options.give_up_seconds >= 0, "the time to wait is a time");
    server_address address;
    must(read_server_address(options.list_host, address).empty(), "the host can be asked");
    must(on_terminal || options.changed != changed_files::ask, "no question where no one answers");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const scratch home;
    setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    std::string text(view_of(data, size));
    std::replace(text.begin(), text.end(), '\n', '\0');
    std::vector<char*> arguments = {const_cast<char*>("velaris-installer")};
    for (std::size_t at = 0; at < text.size(); at = text.find('\0', at) + 1) {
        arguments.push_back(text.data() + at);
        if (text.find('\0', at) == std::string::npos) break;
    }
    arguments.push_back(nullptr);
    const int argc = static_cast<int>(arguments.size()) - 1;

    cmdline.clear();
    stg = stg_t{};
    const bool goes_on = survives([&] {
        cmdline.init_unix(argc, arguments.data());
        check_options(argc, arguments.data(), false);
        check_options(argc, arguments.data(), true);
        pref.IO_set(pref_installer, scan_read);
    });
    const bool ends = cmdline.has_option("--help") || cmdline.has_option("-h") || cmdline.has_option("--cmnds") ||
                      cmdline.has_option("--version");
    must(goes_on != ends, "only a question about the program ends it");
    cmdline.clear();
    survives([&] { cmdline.init_win(text); });
    return 0;
}
