#include "engine/placing.h"

#include <cerrno>

#include "engine/backup.h"
#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/outcome.h"
#include "engine/stg.h"
#include "engine/streams.h"
#include "files/error_str.h"
#include "platform/folders.h"
#include "platform/paths.h"

std::string part_of(std::size_t file) {
    const std::string installed = installed_path(current_row(file));
    return std::string(folder_of(installed)) + temp_part + "." + std::to_string(file);
}

void place_file(std::size_t file) {
    file_version_struct& row = current_row(file);
    const beneath_folder root = destination_folder();
    const std::string part = part_of(file), installed = installed_path(row);
    const last_word word = decide_again(file);
    int result = 0;
    if (word == last_word::go_on) {
        result = keep_copy_if_wanted(file);
        if (result == 0) result = root.rename(part, installed);
        if (result == EXDEV) result = err_leads_outside;
    }
    if (word != last_word::go_on || result != 0) root.remove_file(part);
    if (word == last_word::cancel) {
        next.cancelled = 1;
        return;
    }
    if (result == 0) {
        note_own_change(file);
        ++next.files_done;
    } else {
        fail_install("The installer cannot extract a file.", error_str(result), "", destination_of(row));
    }
    const bool kept = word == last_word::leave && row.sig_have != row.sig_want;
    front.file_finished(kept ? action_duplicate : action_downloading, installed, result);
}
