#include "engine/choose.h"

#include <set>
#include <string>

#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "platform/paths.h"
#include "runtime/log.h"

// Answers that hold for a whole folder; of one installation, from choose_files on.
static struct { std::set<std::string, std::less<>> overwrite_dirs, keep_dirs; } answers;

// What becomes of a wanted file by what is on the disk; `ask` where it is of no release.
static verdict decide_by_content(std::size_t file) {
    const file_version_struct& row = current_row(file);
    const bool removing = is_gone(row);
    if (row.sig_have == "NONE") return removing ? verdict::leave : verdict::fetch;
    if (row.sig_want == row.sig_have) return verdict::leave;
    if (removing && lives_on_elsewhere(file)) return verdict::leave;
    if (!signature_was_shipped(file, row.sig_have)) return verdict::ask;
    return removing ? verdict::remove : verdict::fetch;
}

verdict decide_file(std::size_t file) {
    return is_wanted(current_row(file)) ? decide_by_content(file) : verdict::leave;
}

// What is to become of a file that the user changed: do_it, keep or cancel.
static changed_answer ask_about(std::size_t file) {
    file_version_struct& row = current_row(file);
    const std::string destination = destination_of(row);
    const std::string_view folder = folder_of(destination);
    row.keep_copy = 0;
    if (answers.overwrite_dirs.contains(folder)) return changed_answer::do_it;
    if (answers.keep_dirs.contains(folder)) return changed_answer::keep;
    xer << "File: " << destination << "  sig_want=" << row.sig_want << "  sig_have=" << row.sig_have << "\n";
    const changed_answer answer = front.select_alert(destination, is_gone(row), trouble_with(file));
    switch (answer) {
        case changed_answer::do_all:
            answers.overwrite_dirs.emplace(folder);
            return changed_answer::do_it;
        case changed_answer::keep_all:
            answers.keep_dirs.emplace(folder);
            return changed_answer::keep;
        case changed_answer::backup:
            row.keep_copy = 1;
            return changed_answer::do_it;
        default:
            return answer;
    }
}

int choose_files() {
    answers = {};
    for (std::size_t file = 0; file < sim_info.size(); ++file) {
        file_version_struct& row = current_row(file);
        const verdict decision = decide_file(file);
        bool wanted = decision != verdict::leave;
        if (decision == verdict::ask) {
            const changed_answer answer = ask_about(file);
            if (answer == changed_answer::cancel) return 0;
            wanted = answer == changed_answer::do_it;
            if (!wanted) front.file_finished(action_duplicate, installed_path(row), 0);
        }
        row.do_fetch = wanted && !is_gone(row);
        row.do_delete = wanted && is_gone(row);
    }
    return 1;
}

last_word decide_again(std::size_t file) {
    if (is_untouched(file)) return last_word::go_on;
    examine_again(file);
    switch (decide_by_content(file)) {
        case verdict::leave:
            return last_word::leave;
        case verdict::ask:
            break;
        default:
            return last_word::go_on;
    }
    const changed_answer answer = ask_about(file);
    if (answer == changed_answer::cancel) return last_word::cancel;
    return answer == changed_answer::do_it ? last_word::go_on : last_word::leave;
}
