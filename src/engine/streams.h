// streams.h: who takes which file, and when. Up to four streams walk the file list, each with a slot of the
// pool of transfers.
//
// A stream that is on is fresh (it takes the next file at its next turn), at a file, or past the end of the list: idle,
// since a transfer that fails moves next_file back, and there may be work again. How many are on follows the speed.
// Threads: main thread only.
#pragma once

#include <cstddef>

constexpr int stream_max = 4;

struct next_t {
    int next_file = 0;  // index in sim_info of the next file to hand out
    int all_done = 0;   // set when no stream has a file left; no reset clears it
    int stream_on[stream_max] = {};
    int stream_fresh[stream_max] = {};  // takes a new file at its next turn
    int stream_file[stream_max] = {};
    float start_time = 0;  // real time of the last reset
    float part_kb = 0;     // of the files in flight; rebuilt by every call of grab_files
    float down_kb = 0;     // of the files finished, in zip_size units
    float disk_kb = 0;     // of the files finished, in ext_size units
    int files_done = 0;    // files fetched and expanded, or deleted, since the last reset
    int progress = 0;      // moves with every file that came and was right, or was deleted
    int cancelled = 0;     // the user ended the install by his answer to a question
};
extern next_t next;

int stream_slot(int stream);          // of the pool
std::size_t stream_file(int stream);  // in sim_info; it may be past its end

void streams_start();                // two streams (one from a disc), from the first file, counters at 0
bool stream_takes_turn(int stream);  // false where it is off or past the end; a fresh one is given the next file first
void stream_finished_file(int stream);  // one stream more, one less, or the same ones go on
void stream_retries(int stream);        // the same file again; files beyond it are handed out once more
bool streams_have_work();
int streams_on();

// The share of the stream's file that has arrived; a little below 0 while its length is not known.
float stream_arrived_share(int stream);

// No stream can take a file or start a transfer before data comes in or a pause ends.
bool streams_wait_for_data();
