#include "app/console/output.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <set>

#include "app/console/json.h"
#include "app/progress_line.h"
#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "net/server_list.h"
#include "runtime/memory.h"
#include "runtime/utf8.h"
#include "runtime/xtim.h"

namespace {

// What one run's output remembers. Process-wide, main thread only.
struct output_t {
    bool json = false;
    bool quiet = false;
    bool colour = false;
    bool opened = false;
    bool ended = false;
    std::string last_header, last_status[3], last_said;
    double last_json_progress = -1;
    double last_pace = -1;
    int files_total = -1;              // of the running install; -1: not counted yet
    std::set<std::string> files_done;  // by installed path: a file that is fetched twice is one file
    double last_failing = -1;          // when the sentences of a failing download went out
    std::string last_alert;
    double last_alert_said = -1;
};
output_t output;
progress_line progress;

// A line goes out at once and whole: whoever reads it may be waiting for it.
void print_json(const json_object& object) {
    const std::string line = object.line();
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);
}

// Null for a sentence that stays in the colour of the terminal.
const char* escape_of(tone kind) {
    switch (kind) {
        case tone::good_news:
            return "\033[32m";
        case tone::bad_news:
        case tone::error:
            return "\033[31m";
        case tone::plain:
            break;
    }
    return nullptr;
}

// Percentages change all the time; a sentence that differs only in its digits is the same one to a log of plain lines.
std::string without_digits(const std::string& text) {
    std::string out;
    for (const char c : text)
        if (c < '0' || c > '9') out += c;
    return out;
}

// -1 stands in JSON for what is not known.
std::int64_t rounded(double number) {
    return std::isfinite(number) ? std::llround(number) : -1;
}

std::string size_text(double kilobytes) {
    std::string text;
    set_size_str(static_cast<float>(kilobytes), &text);
    return text.erase(0, text.find_first_not_of(' '));
}

// What the decisions, as they stand, will fetch and delete.
int count_files_total() {
    int count = 0;
    for (const file_history_struct& history : sim_info)
        count += history.back().do_fetch || history.back().do_delete;
    return count;
}

}  // namespace

void console_open(const console_options& options) {
    const bool terminal = isatty(STDOUT_FILENO) != 0;
    const char* no_colour = std::getenv("NO_COLOR");
    output = output_t{};
    output.opened = true;
    output.json = options.json;
    if (options.json) mem_report_without_folder = mem_report_place::standard_error;
    output.quiet = options.quiet;
    output.colour = terminal && !(no_colour && *no_colour);
    progress.open(options.json || options.quiet ? nullptr : stdout, terminal);
}

void console_sentence(const sentence& said) {
    if (said.text.empty() || said.text == output.last_said) return;
    output.last_said = said.text;
    if (output.json) {
        print_json(json_object("status").add("text", said.text));
        return;
    }
    progress.clear();
    const char* escape = output.colour ? escape_of(said.kind) : nullptr;
    std::printf("%s%s%s\n", escape ? escape : "", printable(said.text).c_str(), escape ? "\033[0m" : "");
    std::fflush(stdout);
}

void console_flow_sentences() {
    const sentence header = header_sentence();
    // A state that comes and goes many times a second, such as a check that is tried again, is one sentence.
    const bool checking = !next.all_done && stg.server_cnt > 0 && stg.dir_state == dir_fetching;
    const std::string key = checking ? "checking" : without_digits(header.text);
    if (key != output.last_header) {
        output.last_header = key;
        console_sentence(header);
    }
    // Between catalogue and scan nothing is known of the disk yet. While files travel the progress line says it better
    // than a sentence for each file; failures still count.
    if (stg.dir_state == dir_unread) return;
    if (stg.install_state == install_running) {
        // A run may fail and try again for hours; its sentences go out at most every five seconds.
        const bool due = output.last_failing < 0 || xtim_class::seconds() - output.last_failing >= 5;
        if (!stg.down_failed || !due) return;
        output.last_failing = xtim_class::seconds();
    }
    const status_sentences status = status_lines();
    for (int i = 0; i < 3; ++i) {
        if (status.line[i].text == output.last_status[i]) continue;
        output.last_status[i] = status.line[i].text;
        console_sentence(status.line[i]);
    }
}

void console_offer() {
    if (!output.json) return;
    print_json(json_object("offer")
                   .add("name", server_list.install_name)
                   .add("download_kb", rounded(stg.down_size))
                   .add("install_kb", rounded(stg.disk_size)));
}

// Null for a file that stays as it is, which no plan mentions.
static const char* verdict_word(verdict decided, bool json) {
    switch (decided) {
        case verdict::fetch:
            return json ? "fetch" : "FETCH";
        case verdict::remove:
            return json ? "delete" : "DELETE";
        case verdict::ask:
            return json ? "ask" : "ASK";
        default:
            return nullptr;
    }
}

void console_plan() {
    if (!output.json)
        std::printf("to download: %lld kB\nto install: %lld kB\n", static_cast<long long>(rounded(stg.down_size)),
                    static_cast<long long>(rounded(stg.disk_size)));
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const char* word = verdict_word(decide_file(file), output.json);
        if (!word) continue;
        const std::string path = installed_path(current_row(file));
        if (output.json)
            print_json(json_object("file").add("action", word).add("path", path).add("result", std::int64_t{0}));
        else
            std::printf("%s %s\n", word, printable(path).c_str());
    }
    std::fflush(stdout);
}

void console_scan_progress(double share, const std::string& what, const std::string& item) {
    if (output.json) return;
    progress.show(share, what, item, xtim_class::seconds());
}

// At most one object a second, and always the last.
static void json_progress(const next_t& table, const install_pace& pace, bool last) {
    const double now = xtim_class::seconds();
    if (!last && output.last_json_progress >= 0 && now - output.last_json_progress < 1) return;
    output.last_json_progress = now;
    print_json(json_object("progress")
                   .add("download_kb", rounded(pace.done_kb))
                   .add("install_kb", rounded(table.disk_kb))
                   .add("files_done", static_cast<std::int64_t>(output.files_done.size()))
                   .add("files_total", std::int64_t{output.files_total})
                   .add("rate_kb_s", rounded(pace.rate_kb_s))
                   .add("seconds_left", rounded(pace.seconds_left)));
}

// By kilobytes; by files where all of them are too small to count any.
static double install_share(const next_t& table) {
    const auto files = static_cast<int>(output.files_done.size());
    if (files >= output.files_total) return 1;
    if (flow.tot_disk_req > 0) return std::min(double{table.disk_kb} / flow.tot_disk_req, 1.0);
    return static_cast<double>(files) / output.files_total;
}

// The text of the progress line, without its bar and its percentage. At the end the time that is left says nothing.
static std::string progress_text(const install_pace& pace, bool last) {
    const double total = flow.tot_down_req;
    std::string text = std::to_string(output.files_done.size()) + " of " + std::to_string(output.files_total) +
                       " files, " + size_text(std::min(pace.done_kb, total)) + " of " + size_text(total) + ", " +
                       std::to_string(rounded(pace.rate_kb_s)) + " kB/s";
    if (!last && std::isfinite(pace.seconds_left)) text += ", " + time_left_text(pace.seconds_left) + " left";
    return text;
}

void console_install_progress(bool last) {
    // The loop passes here for every block of data; nobody reads that fast.
    if (!last && output.last_pace >= 0 && xtim_class::seconds() - output.last_pace < 0.1) return;
    output.last_pace = xtim_class::seconds();
    if (output.files_total < 0) {
        output.files_total = count_files_total();
        progress.restart();
    }
    const next_t& table = stg.install_state == install_over ? flow.finished : next;
    const install_pace pace = get_install_pace(table);
    if (output.json)
        json_progress(table, pace, last);
    else if (last)
        progress.show_last(install_share(table), progress_text(pace, last));
    else
        progress.show(install_share(table), progress_text(pace, last), crnt_file_name, xtim_class::seconds());
}

void console_file(int action, const std::string& path, int result) {
    if (result == 0 && action != action_duplicate) output.files_done.insert(path);
    if (!output.json) return;
    const char* word = action == action_deleting ? "delete" : action == action_downloading ? "fetch" : "keep";
    print_json(json_object("file").add("action", word).add("path", path).add("result", std::int64_t{result}));
}

// A catalogue that is damaged on every server raises the same alert with each try. The log has them all.
static bool is_repeated_alert(const exce_class& alert, const std::string& place) {
    const std::string text = alert.line1 + "\n" + alert.line2 + "\n" + alert.line3 + "\n" + alert.line4 + "\n" + place;
    if (alert.level == t_alert && text == output.last_alert && xtim_class::seconds() - output.last_alert_said < 5)
        return true;
    output.last_alert = text;
    output.last_alert_said = xtim_class::seconds();
    return false;
}

void console_alert(const exce_class& alert, const std::string& place, int) {
    if (is_repeated_alert(alert, place)) return;
    progress.clear();
    for (const std::string* line : {&alert.line1, &alert.line2, &alert.line3, &alert.line4})
        if (!line->empty()) std::fprintf(stderr, "%s\n", printable(*line).c_str());
    std::fprintf(stderr, "%s\n", place.c_str());
    std::fflush(stderr);
    if (!output.json || output.ended) return;
    print_json(json_object("alert")
                   .add("level", std::int64_t{alert.level})
                   .add_raw("lines", "[" + json_text(alert.line1) + "," + json_text(alert.line2) + "," +
                                         json_text(alert.line3) + "," + json_text(alert.line4) + "]")
                   .add("place", place));
}

void console_problem(const std::string& text) {
    progress.clear();
    std::fprintf(stderr, "%s\n", printable(text).c_str());
    std::fflush(stderr);
}

bool console_output_arrived() {
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}

void console_end(int status) {
    if (output.ended) return;
    output.ended = true;
    progress.clear();
    if (output.opened && output.json) print_json(json_object("end").add("status", std::int64_t{status}));
    std::fflush(stdout);
}
