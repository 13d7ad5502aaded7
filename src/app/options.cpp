#include "app/options.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <string_view>
#include <utility>

#include "app/dest.h"
#include "app/pref.h"
#include "engine/examine.h"
#include "engine/trust.h"
#include "net/http.h"
#include "net/server_address.h"
#include "runtime/cmdline.h"
#include "runtime/product.h"
#include "runtime/utf8.h"

namespace {

constexpr option_row installer_rows[] = {
    {"-path", " FOLDER", "Installs to FOLDER.  Stands first, before all other options.\n"},
    {"--console", nullptr, "Runs on the terminal, with no window.\n"},
    {"--list_host", "=[http://|https://]HOST[:PORT]", "The host that the list of servers is fetched from.\n"},
    {"--target_os", "=1|2|3", "The system to install for: 1 Macintosh, 2 Windows, 3 Linux.\n"},
    {"--scale", "=auto|N", "Size of the window's picture, 0.5 to 4; auto goes by the display.\n"},
    {"--limit_rate", "=N[k|M]",
     "Fetches at most N bytes a second in all, k for thousands, M for millions; 0: no limit.\n"},
    {"--agree", nullptr, "Agrees to the licence, so that it is not asked on the terminal.\n"},
    {"--changed", "=ask|keep|backup|overwrite|cancel",
     "What to do with files that you changed; backup takes the new file and keeps yours\n"
     "beside it.  On a terminal you are asked, otherwise such a file cancels the\n"
     "installation.\n"},
    {"--check", nullptr, "Only compares the folder with the release and prints what would be done.\n"},
    {"--verify", nullptr, "Reads every file, and believes nothing that an earlier run found out.\n"},
    {"--public_key", "=KEY", "Takes only a release that is signed by this minisign key: its text, or a file.\n"},
    {"--allow_older", nullptr, "Takes a signed release that is older than one seen before, or out of date.\n"},
    {"--give_up", "=SECONDS", "Ends when nothing came for so long.  Without it a run tries for ever.\n"},
    {"--quiet", nullptr, "Shows no progress.\n"},
    {"--json", nullptr, "Prints one JSON object a line and nothing else.\n"},
    {"--pref:KEY", "=VALUE", "Sets a preference, such as --pref:_stream_count=2.\n"},
    {"--version", nullptr, "Prints the version and the build number.\n"},
};

// The family's --help tells of its options by a line of their own each. These it leaves out, though its programs know
// them.
constexpr option_row family_untold[] = {
    {"--cmnds", "=PATH", ""},      {"--no_dds", nullptr, ""},     {"--use_threaded_ogl", nullptr, ""},
    {"--no_sblend", nullptr, ""},  {"--use_fprogs", nullptr, ""}, {"--use_pixel_counters", nullptr, ""},
    {"--use_vprogs", nullptr, ""},
};

struct known_option {
    std::string_view name;
    std::string_view value;  // as in option_row; empty for a plain switch
};

// What may stand on the command line: the program's own options, and the family's, told and untold.
std::vector<known_option> known_options(const option_table& table) {
    std::vector<known_option> known;
    const auto add = [&](const option_row& row) { known.push_back({row.name, row.value ? row.value : ""}); };
    std::for_each(table.rows.begin(), table.rows.end(), add);
    std::for_each(std::begin(family_untold), std::end(family_untold), add);
    for (std::string_view rest = family_usage; !rest.empty();) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        const std::size_t name = std::min(line.find('='), line.size());
        if (line.starts_with('-')) known.push_back({line.substr(0, name), line.substr(name)});
    }
    return known;
}

// How many bytes have to be put in, taken out or replaced to make the one word of the other.
std::size_t edits_between(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i + 1);
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

std::string unknown_option(std::string_view name, const std::vector<known_option>& known) {
    std::string text = "I do not know the option '" + std::string(name) + "'";
    const auto distance = [&](const known_option& one) { return edits_between(name, one.name); };
    const auto nearest =
        std::min_element(known.begin(), known.end(),
                         [&](const known_option& a, const known_option& b) { return distance(a) < distance(b); });
    // More than a third of a word is another word.
    if (distance(*nearest) * 3 <= name.size()) text += "; did you mean " + std::string(nearest->name) + "?";
    return text;
}

// The folder behind -path. An option there means that the folder was forgotten; a line end in the path would end the
// line of the preferences that it is remembered in.
std::string problem_of_path(const char* folder) {
    if (!folder || *folder == '\0') return "-path wants a folder behind it";
    if (folder[0] == '-' && folder[1] == '-')
        return std::string("-path wants a folder behind it, and not '") + folder + "'";
    if (folder_argument(folder).find_first_of("\r\n") != std::string::npos)
        return std::string("-path wants a folder without a line end in its path, and not '") + folder + "'";
    return {};
}

// A setting that nobody reads would be without effect, and one without a value would be lost at the next start.
std::string problem_of_setting(std::string_view name, std::string_view value, const option_table& table) {
    const std::string key(name.substr(name.find(':') + 1));
    if (!table.has_setting(key)) return "--pref: does not know the preference '" + key + "'";
    if (value.empty()) return std::string(name) + " wants a value: " + std::string(name) + "=VALUE";
    if (value.find_first_of("\r\n") != std::string_view::npos)
        return std::string(name) + " wants a value without a line end";
    return {};
}

// Empty where there is none.
std::string problem_of(std::string_view argument, const std::vector<known_option>& known, const option_table& table) {
    const std::size_t equals = argument.find('=');
    const std::string_view name = argument.substr(0, equals);
    const std::string_view value = equals == std::string_view::npos ? "" : argument.substr(equals + 1);
    if (table.has_setting && name.starts_with("--pref:")) return problem_of_setting(name, value, table);
    const auto found = std::find_if(known.begin(), known.end(), [&](const auto& one) { return one.name == name; });
    if (found == known.end()) return unknown_option(name, known);
    if (found->value.empty() && equals != std::string_view::npos) return std::string(name) + " takes no value";
    if (!found->value.empty() && value.empty())
        return std::string(name) + " wants a value: " + std::string(name) + std::string(found->value);
    return {};
}

}  // namespace

const option_table installer_options = {
    "VELARIS INSTALLER", installer_rows,
    "Exit status: 0 complete or already the latest, 1 failed, 2 wrong usage, 3 declined\n"
    "or cancelled, 4 gave up, 5 another run is at work on this folder, 130 interrupted\n"
    "with Ctrl-C, 143 ended by SIGTERM.\n",
    [](const std::string& key) { return pref.has_setting(key); }};

std::string usage_text(const option_table& table) {
    std::string text = std::string("\n") + table.heading + "\n";
    for (const option_row& row : table.rows)
        text += std::string(row.name) + (row.value ? row.value : "") + "\n" + row.words;
    return text + "\n" + table.closing;
}

std::vector<wrong_option> wrong_options(int argc, char* const* argv, const option_table& table) {
    const std::vector<known_option> known = known_options(table);
    const bool has_path = std::any_of(known.begin(), known.end(), [](const auto& one) { return one.name == "-path"; });
    std::vector<wrong_option> wrong;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        std::string problem;
        if (has_path && argument == "-path") {
            // Anywhere else the run would quietly go to another folder.
            problem = i == 1 ? problem_of_path(argv[2]) : "-path FOLDER must stand before all other options";
            if (i + 1 < argc && std::strncmp(argv[i + 1], "--", 2) != 0) ++i;
        } else {
            problem = problem_of(argument, known, table);
        }
        if (!problem.empty()) wrong.push_back({argument.substr(0, argument.find('=')), printable(problem)});
    }
    return wrong;
}

bool stands_in(int argc, char* const* argv, const char* name) {
    const std::string_view wanted = name;
    return std::any_of(argv + std::min(argc, 1), argv + argc,
                       [&](std::string_view argument) { return argument.substr(0, argument.find('=')) == wanted; });
}

bool only_informs(int argc, char* const* argv) {
    for (const char* name : {"--help", "-h", "--version", "--cmnds"})
        if (stands_in(argc, argv, name)) return true;
    return false;
}

std::string path_option(int argc, char* const* argv) {
    if (argc < 2 || std::strcmp(argv[1], "-path") != 0 || !problem_of_path(argv[2]).empty()) return {};
    return folder_argument(argv[2]);
}

bool list_host_option(std::string& host, std::string& problem) {
    host = default_list_host;
    if (!cmdline.has_option("--list_host")) return true;
    host = cmdline.get_option("--list_host");
    server_address address;
    const std::string wrong = read_server_address(host, address);
    if (wrong.empty()) return true;
    problem = "--list_host wants [http://|https://]HOST[:PORT], and '" + host + "' " + wrong;
    return false;
}

bool scale_option(std::string& problem) {
    if (!cmdline.has_option("--scale")) return true;
    const std::string value = cmdline.get_option("--scale");
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    if (value == "auto" || (!value.empty() && *end == '\0' && number >= 0.5 && number <= 4)) return true;
    problem = "--scale wants auto or a number from 0.5 to 4, and not '" + value + "'";
    return false;
}

bool limit_rate_option(std::string& problem) {
    if (!cmdline.has_option("--limit_rate")) return true;
    const std::string value = cmdline.get_option("--limit_rate");
    if (read_rate(value.c_str(), http.limit.of_this_run)) return true;
    problem = "--limit_rate wants a number of bytes a second such as 500k or 2M, and not '" + value + "'";
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

bool trust_options(std::string& problem) {
    examination.read_everything = cmdline.has_option("--verify");
    trust.allow_older = cmdline.has_option("--allow_older");
    trust_built_in_keys();
    return !cmdline.has_option("--public_key") || trust_key(cmdline.get_option("--public_key"), problem);
}
