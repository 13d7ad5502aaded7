// zip_large.h: reads entries of 4 GB and more. Their headers hold a mark where the sizes do not fit and the sizes
// themselves in an extra field; minizip as Debian 12 and others ship it misses the mark and stops at 4 GB, though it
// writes such entries well. Everything else about an archive stays minizip's.
#pragma once

#include <minizip/unzip.h>

#include <cstddef>
#include <functional>
#include <string>

// Takes one block; 0 to go on, else the result with which reading ends.
typedef std::function<int(const unsigned char* bytes, std::size_t count)> block_sink;

// True if a size of `info` was such a mark; both are then the entry's own.
bool mend_large_sizes(unzFile zip, unz_file_info64& info);

// Reads the current entry of the archive at `path` to its end, tests size and checksum. Results as for zip_to_file.
int read_large_entry(unzFile zip, const std::string& path, const unz_file_info64& info, const block_sink& sink);
