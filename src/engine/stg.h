// stg.h: the install record: what the flow, the screens and the console read and write. Main thread only.
#pragma once

#include <string>

#include "engine/destination.h"
#include "runtime/product.h"

enum : int { dir_fetching = 0, dir_unread = 1, dir_failed = 2, dir_ready = 3 };
enum : int { install_idle = 0, install_running = 1, install_over = 2 };
enum : int { action_deleting = 0, action_downloading = 1, action_duplicate = 2, action_not_needed = 3 };

struct stg_t {
    int dir_state = dir_fetching;
    int target_os = platform_os;  // 1 Macintosh, 2 Windows, 3 Linux
    int log_actions = 0;          // preference
    int install_state = install_idle;
    int down_failed = 0;  // the last attempt at a file failed and another server is being tried
    int install_failed = 0;
    int server_cnt = -1;  // -1: the list has not been read
    int server_sel = 0;
    int file_action = action_not_needed;
    float file_rat = 0;      // share of the current file that has arrived, 0 to 1; -0.01 if unknown
    int use_max_cpu = 0;     // preference
    int rename_folder = 1;   // preference
    int stream_count = 0;    // preference; 0 automatic, else 1 to 4
    int always_ask_dir = 0;  // preference
    float down_size = 0;     // kilobytes of 1000 bytes to download, summed by the scan
    float disk_size = 0;     // kilobytes to install
    float temp_size = 0;     // kilobytes that may lie in the temporary folder at one time
};
extern stg_t stg;

extern std::string temp_path;                       // private to the run
extern std::string dvd_path;                        // root of a disc source; empty here
extern std::string crnt_file_name, crnt_file_path;  // for the status lines

// Cuts everything up to and including the first "/": a catalogue path without its distribution folder.
void trim_dest_folder(std::string& path);
