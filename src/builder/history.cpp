#include "builder/history.h"

#include <algorithm>

#include "builder/classify.h"
#include "builder/region.h"
#include "builder/report.h"
#include "files/io_utils.h"
#include "runtime/hl_string.h"
#include "runtime/oops.h"
#include "runtime/product.h"

void index_history() {
    int newest = 0;
    for (std::size_t i = 0; i < sim_info.size(); ++i) {
        file_version_struct& first = sim_info[i].front();
        std::string key = first.path;
        chop_platform(key, first.platform);
        if (!build.sim_info_index.emplace(key, i).second)
            build_fatal("WARNING: you appear to have a file TWICE in an old directory file.", "", "", first.path, 520);
        first.do_fetch = 1;
        for (const file_version_struct& row : sim_info[i]) {
            newest = std::max(newest, row.version);
            if (row.version == build.release_number)
                build_fatal("You idiot! I already have a version:", float_text("version_number ", build.release_number),
                            "in file ", row.path, 526);
        }
    }
    if (sim_info.empty()) return;
    builder_front.history(static_cast<int>(sim_info.size()), newest);
    // An installer of the newer release would take this one's files for older than its own.
    if (newest > build.release_number)
        __MACIBM_alert(0, "The number of this release is not above that of every earlier one!",
                       "This release: " + std::to_string(build.release_number) +
                           ", newest number in the history: " + std::to_string(newest),
                       build.old_dir_path, "Raise it with --version_number=N.", t_exit, OOPS_PLACE);
}

void write_folder_line(const std::string& dir) {
    if (dir == build.prev_dir) return;
    build.prev_dir = dir;
    ouf << "\nDIR " << dir << "\n";
}

// One line of the catalogue; the sizes are whole numbers there.
static void write_row(const file_version_struct& row, const std::string& name) {
    ouf << "FILE " << row.disc_set << ' ' << row.platform << ' ' << row.version << ' '
        << static_cast<std::int64_t>(row.zip_size) << ' ' << static_cast<std::int64_t>(row.ext_size) << ' '
        << row.sig_want << ' ' << name << "\n";
}

// A row without a name would be read as the row of another file.
static void check_name(const std::string& name, const char* where, int line) {
    if (name.empty()) build_fatal("0-size filename!", "Now how am I supposed to deal with this?", where, name, line);
}

void write_file_rows(const std::string& key, const std::string& name, const file_version_struct& present) {
    const auto known = build.sim_info_index.find(key);
    if (known == build.sim_info_index.end()) {
        ++build.tally.added;
    } else {
        file_history_struct& history = sim_info[known->second];
        for (const file_version_struct& row : history) {
            // The same content is listed once, under its newest version; and a file that is back is not withdrawn.
            if (row.sig_want == present.sig_want || is_gone(row)) continue;
            check_name(name, "This is in the OLD file list.", 350);
            write_row(row, name);
        }
        history.front().do_fetch = 0;
        ++(history.back().sig_want == present.sig_want ? build.tally.same : build.tally.changed);
    }
    check_name(name, "This is in the NEW file loop", 357);
    write_row(present, name);
}

void write_gone_files() {
    for (const file_history_struct& history : sim_info) {
        if (!history.front().do_fetch) continue;
        // A file that is of no concern to this set leaves the catalogue without a word.
        if (!is_good_file(build.src_fold + history.front().path, 0, 0)) continue;

        std::string dir;
        get_path_with_path(dir, history.front().path);
        const std::string name = get_path_with_path_file;
        write_folder_line(dir);
        for (const file_version_struct& row : history)
            write_row(row, name);
        if (is_gone(history.back())) continue;
        file_version_struct gone = history.back();
        gone.version = build.release_number;
        gone.zip_size = gone.ext_size = 0;
        gone.sig_want = "GONE";
        write_row(gone, name);
        ++build.tally.withdrawn;
    }
}
