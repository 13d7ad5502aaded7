#include "app/console/options.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "app/options.h"
#include "engine/stg.h"
#include "runtime/cmdline.h"

// Silence means to ask where someone is there, and else to touch nothing.
static bool read_changed(bool on_terminal, changed_files& changed, std::string& problem) {
    changed = on_terminal ? changed_files::ask : changed_files::cancel;
    if (!cmdline.has_option("--changed")) return true;
    const struct {
        const char* word;
        changed_files meaning;
    } values[] = {{"ask", changed_files::ask},
                  {"keep", changed_files::keep},
                  {"backup", changed_files::backup},
                  {"overwrite", changed_files::overwrite},
                  {"cancel", changed_files::cancel}};
    const std::string value = cmdline.get_option("--changed");
    const auto named =
        std::find_if(std::begin(values), std::end(values), [&](const auto& v) { return v.word == value; });
    if (named == std::end(values))
        problem = "--changed wants ask, keep, backup, overwrite or cancel, and not '" + value + "'";
    else if (named->meaning == changed_files::ask && !on_terminal)
        problem = "--changed=ask needs a terminal to ask on; use keep, backup, overwrite or cancel";
    else
        changed = named->meaning;
    return problem.empty();
}

// A time without end, or what is no number, would wait for ever or not at all.
static bool read_give_up(double& seconds, std::string& problem) {
    if (!cmdline.has_option("--give_up")) return true;
    const std::string value = cmdline.get_option("--give_up");
    char* end = nullptr;
    seconds = std::strtod(value.c_str(), &end);
    if (!value.empty() && *end == '\0' && std::isfinite(seconds) && seconds > 0) return true;
    problem = "--give_up wants a number of seconds above 0, and not '" + value + "'";
    return false;
}

bool read_console_options(bool on_terminal, console_options& options, std::string& problem) {
    options.agree = cmdline.has_option("--agree");
    options.check = cmdline.has_option("--check");
    options.quiet = cmdline.has_option("--quiet");
    options.json = cmdline.has_option("--json");
    options.target_os = platform_os;
    return read_changed(on_terminal, options.changed, problem) && read_give_up(options.give_up_seconds, problem) &&
           list_host_option(options.list_host, problem) && target_os_option(options.target_os, problem) &&
           limit_rate_option(problem) && scale_option(problem) && trust_options(problem);
}
