#include "runtime/cmdline.h"

#include <cstdio>
#include <string_view>
#include <vector>

#include "runtime/cmnd.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"

UTL_cmdline cmdline;

const char* cmdline_own_usage = nullptr;

static bool is_blank(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void UTL_cmdline::set(const std::string& name, const std::string& value) {
    if (options.count(name)) xer << "WARNING: command line option " << name << "=" << value << "included twice.\n";
    options[name] = value;
}

void UTL_cmdline::init_unix(int argc, char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        const std::string value = equals == std::string::npos ? "" : argument.substr(equals + 1);
        set(name, value);
        xer << "     '" << name;
        if (!value.empty()) xer << "'='" << value;
        xer << "'\n";
    }
    init_common();
}

void UTL_cmdline::init_win(const std::string& text) {
    std::string_view rest = text;
    const auto take_while = [&rest](auto wanted) {
        std::size_t size = 0;
        while (size < rest.size() && wanted(rest[size]))
            ++size;
        std::string taken(rest.substr(0, size));
        rest.remove_prefix(size);
        return taken;
    };
    for (take_while(is_blank); !rest.empty(); take_while(is_blank)) {
        const std::string name = take_while([](char c) { return !is_blank(c) && c != '='; });
        std::string value;
        if (rest.starts_with('=')) {
            rest.remove_prefix(1);
            value = take_while([](char c) { return !is_blank(c); });
        }
        set(name, value);
    }
    init_common();
}

// "all" lists every command with its words; anything else is a folder of the tree.
static void print_commands(const std::string& which) {
    if (which == "all") {
        for (const cmnd_class::command& one : cmnd.all())
            std::printf("%-50s %s\n", one.name.c_str(), one.description.c_str());
        return;
    }
    std::vector<std::string> names;
    cmnd.get_cmds_in_path(which, names);
    for (const std::string& name : names)
        std::printf("%s\n", name.c_str());
}

// What only asks about the program ends it here, before anything else is begun. The first that is there counts.
void UTL_cmdline::init_common() const {
    alert_road.log_only = [] { return cmdline.has_option("--fps_test"); };
    if (has_option("--cmnds"))
        print_commands(get_option("--cmnds"));
    else if (has_option("-h") || has_option("--help"))
        std::printf("%s%s", family_usage, cmdline_own_usage ? cmdline_own_usage : "");
    else if (has_option("--version"))
        std::printf("%s, build %d\n", version_text, version_number);
    else
        return;
    leave_process(0);
}

bool UTL_cmdline::has_option(const std::string& name) const {
    return options.count(name) != 0;
}

std::string UTL_cmdline::get_option(const std::string& name) const {
    const auto found = options.find(name);
    return found == options.end() ? std::string() : found->second;
}
