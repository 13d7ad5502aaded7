// placing.h: brings files that were expanded beside their places there, and has the last word on each right before.
// They wait for one another: first all their bytes are on the disk for good, then they are renamed. So whenever the
// power fails, what stands at a file's place is the old file or the new one, whole; never a torn one, which would pass
// for the user's own at the next run. A batch costs one flush of the volume, which runs beside the main thread.
// Considered and dropped: a flush for each file (a disk that turns needs a hundredth of a second for each), and a plan
// written beforehand by which a torn file is known (a file that the user brought back from a backup looks the same).
// Threads: main thread only.
#pragma once

#include <cstddef>
#include <string>

// Where a file is to be expanded to: a hidden name in the folder of its place, another one each time, as a file may be
// fetched twice.
std::string new_part(std::size_t file);

// The part was expanded whole: it takes its place with the next batch, after what the user wanted kept was kept. A file
// that is no longer what the scan saw is decided anew, and may stay; the part goes then. What became of it is told.
void place_later(std::size_t file, const std::string& part);
// Goes on with the batches; false while some file is not at its place yet. `all`: nothing more is to come.
bool go_on_placing(bool all);
// Here and now. Without `may_ask`, a file that calls for a question stays, and its part goes.
void place_all(bool may_ask);
