#include "app/console/console.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "app/console/answers.h"
#include "app/console/options.h"
#include "app/console/output.h"
#include "app/exit_status.h"
#include "app/options.h"
#include "app/pref.h"
#include "app/start.h"
#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/flow.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "files/scan.h"
#include "net/http.h"
#include "platform/interrupt.h"
#include "runtime/cmdline.h"
#include "runtime/startup.h"
#include "runtime/thread.h"
#include "runtime/xtim.h"

namespace {

constexpr int still_running = -1;

constexpr int longest_wait_ms = 250;  // so that times are noticed: 30 seconds of silence, --give_up, progress

// What one pass of the loop leaves behind: whether the next may follow at once.
enum class after_pass { go_on, wait_for_data };

struct run_t {
    console_options options;
    double last_failure_said = -1;
    std::string failure_said;
    std::string destination;  // as it was when the install began
    // For --give_up.
    double last_progress = 0;          // when something was last finished, or enough had come
    int seen_finish = -1;              // a number that moves whenever something is finished
    double most_kb = 0;                // that had come since then
    double looked = 0, kb_before = 0;  // when it was last looked whether enough comes, and most_kb then
};

// Alerts end the process through here, so that a script sees the end of its stream of objects too.
void end_process(int status) {
    console_end(status);
    std::exit(status);
}

// What the network says goes out once, and then at most every five seconds: a run may retry for hours.
void say_failure(run_t& run) {
    const std::string& text = http.last_failure();
    if (text == run.failure_said || (run.last_failure_said >= 0 && xtim_class::seconds() - run.last_failure_said < 5))
        return;
    run.failure_said = text;
    run.last_failure_said = xtim_class::seconds();
    console_sentence({text + " - I am trying again.", tone::error});
}

// After the list or the catalogue was polled: whether it is worth polling again before anything comes in.
after_pass after_transfer(run_t& run, int slot, int result) {
    if (result == net_failed) say_failure(run);
    return http.is_under_way(slot) ? after_pass::wait_for_data : after_pass::go_on;
}

// One step of the install itself.
after_pass work_on_files(run_t& run) {
    flow_file_work_once();
    // The window smooths the share over its frames; a line of text shows it as it is.
    if (flow.tot_disk_req > 0) flow.totl_inst_rat = std::min(next.disk_kb / flow.tot_disk_req, 1.0f);
    if (stg.install_state == install_over) return after_pass::go_on;
    console_install_progress(false);
    if (stg.down_failed) say_failure(run);
    return streams_wait_for_data() ? after_pass::wait_for_data : after_pass::go_on;
}

// Says so where no file is to be fetched, deleted or asked about. Kilobytes do not tell: small files count none.
bool nothing_to_do(const console_options& options) {
    bool has_changed_files = false;
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        const verdict decided = decide_file(file);
        if (decided == verdict::ask && options.changed == changed_files::keep)
            has_changed_files = true;
        else if (decided != verdict::leave)
            return false;
    }
    if (has_changed_files) console_sentence({"Nothing is to be done: all that differs are files that you changed."});
    return true;
}

// Everything is known and nothing touched: the plan for --check, else what a click on INSTALL does in the window. A run
// that ends here does so with one of the exit statuses.
int start_install(run_t& run) {
    console_offer();
    if (run.options.check) {
        console_plan();
        return status_complete;
    }
    if (nothing_to_do(run.options)) return status_complete;
    if (!flow_install_is_live()) return status_failed;
    run.destination = dest_dir_path;
    flow_install();
    if (interrupt_requested()) return still_running;
    if (flow.busy) return status_busy;
    if (flow.declined) return status_declined;
    return still_running;
}

// One pass through the flow's steps in their order; what the window does in a frame.
int pass(run_t& run, after_pass& after) {
    after = after_pass::go_on;
    if (stg.server_cnt == -1) {
        after = after_transfer(run, slot_list, flow_server_list());
        if (app_done) return status_failed;
        if (stg.server_cnt == -1) return still_running;
    }
    if (stg.server_cnt == 0) {
        console_flow_sentences();
        return status_failed;
    }
    flow_make_paths();
    if (stg.dir_state == dir_fetching) after = after_transfer(run, slot_directory, flow_directory());
    if (stg.dir_state == dir_unread) {
        console_flow_sentences();
        flow_scan();
        after = after_pass::go_on;
    }
    if (stg.dir_state == dir_failed) {
        console_flow_sentences();
        return status_failed;
    }
    if (stg.dir_state != dir_ready) return still_running;
    if (stg.install_state == install_idle) {
        flow_disk_space();
        console_flow_sentences();
        return start_install(run);
    }
    if (stg.install_state == install_running) after = work_on_files(run);
    if (flow.declined) return status_declined;
    if (stg.install_state != install_over) return still_running;
    console_install_progress(true);
    console_flow_sentences();
    // The folder may have been renamed to the release.
    if (dest_dir_path != run.destination) console_sentence({"The folder is now " + dest_dir_path});
    return stg.install_failed ? status_failed : status_complete;
}

// Kilobytes that came for what is being fetched now. What is refused and fetched again adds nothing.
double arrived_kb() {
    double kb = double{next.down_kb} + next.part_kb;
    for (const int slot : {slot_list, slot_directory})
        if (const down_ptr& transfer = http.slots[slot]) kb += static_cast<double>(transfer->received) / 1000;
    return kb;
}

// Whether for the time of --give_up no file was finished and nothing came; what trickles in is nothing.
bool gave_up(run_t& run) {
    if (run.options.give_up_seconds <= 0) return false;
    constexpr double least_kb_s = 1;
    const double now = xtim_class::seconds(), span = std::min(run.options.give_up_seconds, 30.0);
    const int finished = next.progress + (stg.server_cnt >= 0) + stg.dir_state + 4 * stg.install_state;
    const double most = finished == run.seen_finish ? std::max(run.most_kb, arrived_kb()) : arrived_kb();
    // Nothing comes, and nothing needs to, while the copy on the disk is examined.
    const bool came = most - run.kb_before >= least_kb_s * span || stg.dir_state == dir_unread;
    if (finished != run.seen_finish || came) run.last_progress = now;
    if (finished != run.seen_finish || came || now - run.looked >= span) {
        run.looked = now;
        run.kb_before = most;
    }
    run.seen_finish = finished;
    run.most_kb = most;
    return now - run.last_progress > run.options.give_up_seconds;
}

// Sleeps until a socket, a finished job or a signal has something to say, or the time has come to look at the clock.
void wait_for(const run_t& run, after_pass after) {
    if (after == after_pass::go_on) return;
    int ms = longest_wait_ms;
    if (run.options.give_up_seconds > 0) {
        const double left = run.options.give_up_seconds - (xtim_class::seconds() - run.last_progress);
        ms = static_cast<int>(std::clamp(left * 1000 + 1, 1.0, static_cast<double>(ms)));
    }
    http.wait(ms, interrupt_wake_fd());
}

// Passes, and waits between them, until there is an exit status.
int run_flow(run_t& run) {
    for (;;) {
        xtim.xtim_update();
        THREAD_check_exception(1);
        if (interrupt_requested()) {
            flow_quit();
            return status_signal + interrupt_requested();
        }
        after_pass after{};
        const int status = pass(run, after);
        if (status != still_running) return status;
        console_flow_sentences();
        if (gave_up(run)) {
            flow_quit();
            console_problem("I give up: nothing came for " + cmdline.get_option("--give_up") + " seconds. " +
                            http.last_failure());
            return status_gave_up;
        }
        wait_for(run, after);
    }
}

}  // namespace

int console_main(int argc, char* const* argv) {
    run_t run;
    // A misspelled option must not install: this comes before anything else, the log included.
    if (const auto wrong = wrong_options(argc, argv, installer_options); !wrong.empty() && !only_informs(argc, argv)) {
        run.options.json = stands_in(argc, argv, "--json");
        console_open(run.options);
        console_problem(wrong.front().problem);
        console_end(status_usage);
        return status_usage;
    }
    const std::string usage = usage_text(installer_options);
    cmdline_own_usage = usage.c_str();
    alert_front.leave = end_process;
    alert_front.show = console_alert;
    runtime_start(argc, argv);

    std::string problem;
    const bool usable = read_console_options(isatty(STDIN_FILENO) != 0, run.options, problem);
    console_open(run.options);
    if (!usable) {
        console_problem(problem);
        MACIBM_finishup(0);
        console_end(status_usage);
        return status_usage;
    }
    if (!run.options.check) alert_front.save_settings = [] { pref.IO_set(pref_installer, scan_write); };
    console_answers_install(run.options);
    catch_interrupts();
    THREAD_make_workers();
    app_start(argc, argv);
    stg.target_os = run.options.target_os;
    flow.list_host = run.options.list_host;

    int status = run_flow(run);
    MACIBM_finishup(1);
    // What --check and --json print is what they are for.
    if (status == status_complete && (run.options.check || run.options.json) && !console_output_arrived()) {
        console_problem("I could not write everything that I found to standard output.");
        status = status_failed;
    }
    console_end(status);
    return status;
}
