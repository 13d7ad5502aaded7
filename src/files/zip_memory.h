// zip_memory.h: an archive that lies in memory, for minizip. Most files of a release are small: read whole, their
// archives cost one read in the place of dozens of seeks, and what just came over the net need not see a disk at all.
#pragma once

#include <minizip/unzip.h>

#include <span>

// Opens an archive for reading; null where it is none. The bytes must outlive it.
unzFile unzip_open_memory(std::span<const unsigned char> bytes);
