// flow.h: the steps of an install. The window calls them from its frame between its drawing, the console from its loop:
// there is one flow, not two.
//
// server_cnt -1 -> list read -> dir_state 0 fetching, 1 unread, 3 ready (2 refused)
//   -> INSTALL: install_state 1 at work -> 2 over
//
// Every step may be called at any time and does nothing where it is not its turn. The one fixed order is that of a
// frame: list, catalogue, a picked destination, scan, INSTALL, QUIT, then the file work or, while idle, the disk space.
// Threads: main thread only.
#pragma once

#include <string>

#include "engine/streams.h"
#include "net/server_list.h"

struct flow_t {
    std::string list_host;  // where "/serverlist.txt" is fetched, with ":port" if not 80
    std::string net_dir_path_zip, dir_path, dir_path_path, dvd_dir_path_zip;  // built once, when the list was read
    int disk_space_avail = 1;                                                 // whether the volume has room
    float tot_down_req = 0;  // copies of stg.down_size and disk_size, taken while idle; kilobytes
    float tot_disk_req = 0;
    float tot_availabl = -1;             // free kilobytes on the destination's volume, -1 if unknown
    float totl_inst_rat = 0;             // smoothed share of the install that is done, 0 to 1
    int catalogue_came = 0;              // it lies in the temporary folder, and its signature is fetched
    int refusals[max_servers + 1] = {};  // of each server's catalogue, for want of a good signature
    next_t finished;                     // the stream table as it stood when the last install ended
    int declined = 0;                    // the last INSTALL ended with a refusal or a cancel
    int busy = 0;                        // the last INSTALL found another run at work on the destination
};
extern flow_t flow;

void flow_start();               // start values of the records; temp_path
int flow_server_list();          // polls the list while there is none; the pool's result, or 1 once it is there
void flow_make_paths();          // the four paths, once
int flow_directory();            // polls the catalogue while dir_state is 0; the pool's result, or 1 once it is there
void flow_destination_picked();  // the user chose another folder
void flow_scan();                // if dir_state is 1: reads the catalogue, then a slice of the comparison
bool flow_install_is_live();     // a click on INSTALL would act
void flow_install();             // INSTALL: reset, folders, agreement, choice of files, and what stands in the way
void flow_quit();                // QUIT
void flow_file_work();           // about ten milliseconds of grab_files, then the smoothed share
void flow_file_work_once();      // one grab_files; true progress is seen in `next`
void flow_disk_space();          // idle: totals and free space
void stream_reset();             // two streams (one from a disc), from the first file, counters at 0
