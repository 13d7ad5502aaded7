#include "engine/choose.h"

#include <algorithm>
#include <cstddef>
#include <set>

#include "engine/directory.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "platform/paths.h"
#include "runtime/log.h"

static file_version_struct& current_row(int file) {
    return sim_info[static_cast<std::size_t>(file)].back();
}

static bool lives_on_elsewhere(int file) {
    const std::vector<int>& all = same_installed_path(file);
    return std::any_of(all.begin(), all.end(), [](int one) { return !is_gone(current_row(one)) && is_wanted(one); });
}

verdict decide_file(int file) {
    const file_version_struct& row = current_row(file);
    const bool removing = is_gone(row);
    if (!is_wanted(file)) return verdict::leave;
    if (row.sig_have == "NONE") return removing ? verdict::leave : verdict::fetch;
    if (row.sig_want == row.sig_have) return verdict::leave;
    if (removing && lives_on_elsewhere(file)) return verdict::leave;
    if (!signature_was_shipped(file, row.sig_have)) return verdict::ask;
    return removing ? verdict::remove : verdict::fetch;
}

// Answers that hold for a whole folder, for one installation.
struct folder_answers {
    std::set<std::string> overwrite_dirs, keep_dirs;
};

// What is to become of a file that the user changed.
static changed_answer ask_about(const file_version_struct& row, folder_answers& answers) {
    const std::string destination = destination_of(row);
    const std::string folder(folder_of(destination));
    if (answers.overwrite_dirs.count(folder)) return changed_answer::do_it;
    if (answers.keep_dirs.count(folder)) return changed_answer::keep;
    xer << "File: " << destination << "  sig_want=" << row.sig_want << "  sig_have=" << row.sig_have << "\n";
    switch (front.select_alert(destination, is_gone(row), "")) {
        case changed_answer::do_it:
            return changed_answer::do_it;
        case changed_answer::keep:
            return changed_answer::keep;
        case changed_answer::do_all:
            answers.overwrite_dirs.insert(folder);
            return changed_answer::do_it;
        case changed_answer::keep_all:
            answers.keep_dirs.insert(folder);
            return changed_answer::keep;
        default:
            return changed_answer::cancel;
    }
}

int choose_files() {
    folder_answers answers;
    for (int file = 0; file < static_cast<int>(sim_info.size()); ++file) {
        file_version_struct& row = current_row(file);
        const verdict decision = decide_file(file);
        bool wanted = decision != verdict::leave;
        if (decision == verdict::ask) {
            const changed_answer answer = ask_about(row, answers);
            if (answer == changed_answer::cancel) return 0;
            wanted = answer == changed_answer::do_it;
            if (!wanted) front.file_finished(action_duplicate, installed_path(row), 0);
        }
        row.do_fetch = wanted && !is_gone(row);
        row.do_delete = wanted && is_gone(row);
    }
    return 1;
}
