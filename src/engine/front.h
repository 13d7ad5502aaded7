// front.h: what the engine asks of whoever runs it: the window, the console or a test fills in this table.
#pragma once

#include <string>

struct front_t {
    // The agreement; non-zero when the user agreed.
    int (*handle_EULA)();
    // A file that the user changed is to be replaced (`removing` 0) or deleted (1). Returns 1 do it, 2 keep it, 3 cancel
    // the installation, 4 do it for every such file of this folder, 5 keep every such file of this folder.
    int (*select_alert)(const std::string& file, int removing);
    // Progress of a scan. `phase` 0: reading the catalogue, 1: examining the disk. Returns at once.
    void (*dir_progress_bar)(float lo, float value, float hi, int phase, const std::string& label,
                             const std::string& item);
    // A file is finished: `action` as in stg.file_action (2: kept); `path` is the installed path below the destination;
    // `result` 0 or a code for error_str.
    void (*file_finished)(int action, const std::string& path, int result);
    // Another run is at work on the destination; the install is not started.
    void (*destination_busy)();
};
extern front_t front;  // defaults: no agreement, cancel, nothing shown
