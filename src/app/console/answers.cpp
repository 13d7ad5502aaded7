#include "app/console/answers.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "app/console/output.h"
#include "app/dest.h"
#include "app/exit_status.h"
#include "app/words.h"
#include "engine/flow.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "platform/interrupt.h"
#include "runtime/oops.h"
#include "runtime/utf8.h"

// Process-wide: what the command line said, set at start-up, and what the user said.
static struct {
    console_options options;
    bool agreed = false;  // asked once a run
} known;

// A question goes where the results do not.
static std::FILE* question_stream() {
    return known.options.json ? stderr : stdout;
}

// One line typed by the user, without its end. False at the end of the input and when a signal asks for the end.
static bool read_answer(const char* prompt, std::string& answer) {
    std::fputs(prompt, question_stream());
    std::fflush(question_stream());
    answer.clear();
    for (;;) {
        pollfd fds[2] = {{STDIN_FILENO, POLLIN, 0}, {interrupt_wake_fd(), POLLIN, 0}};
        poll(fds, 2, -1);
        if (interrupt_requested()) return false;
        if (!fds[0].revents) continue;
        char c = 0;
        if (read(STDIN_FILENO, &c, 1) != 1) return false;
        if (c == '\n') return true;
        answer += c;
    }
}

// Nobody agrees by silence: without a terminal the option has to say it.
static int ask_agreement() {
    if (known.agreed || known.options.agree) return 1;
    for (const char* paragraph : agreement)
        std::fprintf(question_stream(), "%s\n", paragraph);
    if (!isatty(STDIN_FILENO)) {
        console_problem("There is no terminal to ask for your agreement; run again with --agree if you agree.");
        return 0;
    }
    std::string answer;
    if (!read_answer("Do you agree? [y/N] ", answer)) return 0;
    known.agreed = answer == "y" || answer == "Y" || answer == "yes";
    return known.agreed;
}

// The end of the input is a cancel: nothing may be lost because a terminal was closed.
static changed_answer ask_changed(const std::string& file, bool removing) {
    const changed_question question = question_about(removing);
    std::fprintf(question_stream(), "%s\n%s\n%s\n", question.above, printable(file).c_str(), question.below);
    for (int choice = 1; choice <= 6; ++choice)
        std::fprintf(question_stream(), "  %d %s\n", choice, answer_words(changed_answer{choice}, removing));
    std::string answer;
    while (read_answer("Your choice [1-6]: ", answer))
        if (answer.size() == 1 && answer[0] >= '1' && answer[0] <= '6') return changed_answer{answer[0] - '0'};
    return changed_answer::cancel;
}

// By the option where it says something for all files, else by asking.
static changed_answer answer_changed(const std::string& file, bool removing, const std::string& trouble) {
    if (!trouble.empty()) console_problem("I cannot read " + file + ": " + trouble);
    switch (known.options.changed) {
        case changed_files::keep:
            return changed_answer::keep;
        case changed_files::backup:
            return changed_answer::backup;
        case changed_files::overwrite:
            return changed_answer::do_it;
        case changed_files::ask:
            return ask_changed(file, removing);
        default:
            console_problem("You changed " + file +
                            ". Say with --changed=keep, --changed=backup or --changed=overwrite what to do with "
                            "such files.");
            return changed_answer::cancel;
    }
}

static void scan_progress(float lo, float value, float hi, scan_phase phase, const std::string&,
                          const std::string& item) {
    const double share = hi > lo ? (value - lo) / (hi - lo) : 0;
    console_scan_progress(share, scan_phase_words(phase), item);
    // Reading a catalogue is one long call that has touched nothing yet, so this is a place that can end a run from
    // within.
    if (!interrupt_requested()) return;
    flow_quit();
    MACIBM_finishup(1);
    alert_front.leave(status_signal + interrupt_requested());
}

// A folder typed on the terminal, as a dialog would give it: without its last "/". Empty input keeps the one there is.
static int typed_folder(const std::string& message, const std::string&, const std::string& start, std::string& chosen) {
    if (!isatty(STDIN_FILENO)) return 0;
    std::fprintf(question_stream(), "%s\n", message.c_str());
    const std::string prompt = "Folder [" + start + "]: ";
    if (!read_answer(prompt.c_str(), chosen) || chosen.empty()) return 0;
    if (chosen.find_first_of(":\\\r") != std::string::npos || chosen[0] != '/') {
        console_problem("Please name the folder by its whole path, from /, without ':' or '\\'. Nothing was changed.");
        return 0;
    }
    while (chosen.size() > 1 && chosen.back() == '/')
        chosen.pop_back();
    return 1;
}

void console_answers_install(const console_options& chosen) {
    known.options = chosen;
    front.handle_EULA = ask_agreement;
    front.select_alert = answer_changed;
    front.dir_progress_bar = scan_progress;
    front.file_finished = console_file;
    front.destination_busy = [] {
        console_problem("Another run is at work on " + dest_dir_path +
                        ". Nothing was changed; try again when it has ended.");
    };
    front.destination_renamed = [] {
        console_sentence({"The folder has the name of the release now: " + dest_dir_path, tone::good_news});
    };
    choose_folder = typed_folder;
}
