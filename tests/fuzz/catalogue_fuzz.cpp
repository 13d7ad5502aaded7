// The catalogue of a release, compared with a folder, and the choice that follows. The input is what stands behind the
// header: without a right one a browser would be opened on the download page, a thousand times a second.
#include <algorithm>

#include "engine/choose.h"
#include "engine/directory.h"
#include "engine/examine.h"
#include "engine/front.h"
#include "engine/stg.h"
#include "fuzz/fuzz.h"
#include "support/scratch.h"

// A copy that holds a file, a folder and a link of names that the seeds use.
static const scratch& destination() {
    static const scratch folder;
    static const bool made = !folder.write("Aircraft/Heron.acf", "old").empty();
    must(made, "the destination can be made");
    return folder;
}

static void check_shared_paths(std::size_t file) {
    const std::vector<std::size_t>& all = same_file(file);
    must(all.empty() || (all.size() > 1 && std::count(all.begin(), all.end(), file) == 1), "a file is one of its own");
    for (const std::size_t other : all)
        must(installed_path(current_row(other)) == installed_path(current_row(file)),
             "files that share a path have it");
}

static void check_work_list() {
    for (std::size_t i = 0; i < sim_info.size(); ++i) {
        must(!sim_info[i].empty(), "every history has a row");
        for (const file_version_struct& row : sim_info[i]) {
            must(path_stays_below(installed_path(row)), "no row leads out of the destination");
            must(row.path == sim_info[i].back().path, "a history is of one path");
        }
        const file_version_struct& row = sim_info[i].back();
        must(!(row.do_fetch && row.do_delete), "a file is fetched or deleted");
        must(!row.do_delete || row.sig_have != "NONE", "only what is there is deleted");
        check_shared_paths(i);
    }
    for (const auto& [path, files] : contested_paths())
        must(!files.empty() && path_stays_below(path), "a contested path belongs to a file");
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const memory_file catalogue("I\n900 version\nINSTALLER\n" + std::string(view_of(data, size)));
    stg = stg_t{};
    front = front_t{};
    front.select_alert = [](const std::string& file, bool, const std::string&) {
        return changed_answer{static_cast<int>(1 + file.size() % 6)};
    };
    front.dir_progress_bar = [](float lo, float value, float hi, scan_phase, const std::string&, const std::string&) {
        must(lo <= value && value <= hi, "progress stays in its bounds");
    };
    front.file_finished = [](int, const std::string&, int) {};
    dest_dir_path = destination().path();
    this_install_has_exes = 0;
    survives([&] {
        const int result = read_directory(catalogue.path(), "");
        must(result == dir_ready || sim_info.empty(), "nothing stays of a catalogue that was refused");
        if (result == dir_ready && choose_files()) check_work_list();
    });
    return 0;
}
