// front.h: what the engine asks of whoever runs it: the window, the console or a test fills in this table.
#pragma once

#include <string>

// The user's answer about a file that he changed. The numbers are what is typed on a terminal.
enum class changed_answer {
    do_it = 1,     // replace or delete this file
    keep = 2,      // keep it
    cancel = 3,    // end the installation here
    do_all = 4,    // replace or delete every such file of this folder
    keep_all = 5,  // keep every such file of this folder
    backup = 6     // keep a copy beside it, then replace or delete it
};

// What a scan is at.
enum class scan_phase { reading_catalogue, examining_disk };

struct front_t {
    // The agreement; non-zero when the user agreed.
    int (*handle_EULA)();
    // A file that the user changed is to be replaced, or deleted (`removing`). `trouble` tells why nobody knows what is
    // in it, in words; empty for a file that could be read.
    changed_answer (*select_alert)(const std::string& file, bool removing, const std::string& trouble);
    // Progress of a scan. Returns at once.
    void (*dir_progress_bar)(float lo, float value, float hi, scan_phase phase, const std::string& label,
                             const std::string& item);
    // A file is finished: `action` as in stg.file_action (2: kept); `path` is the installed path below the destination;
    // `result` 0 or a code for error_str.
    void (*file_finished)(int action, const std::string& path, int result);
    // Another run is at work on the destination; the install is not started.
    void (*destination_busy)();
    // The destination has got the name of the release; dest_dir_path is the new one.
    void (*destination_renamed)();
};
extern front_t front;  // defaults: no agreement, cancel, nothing shown
