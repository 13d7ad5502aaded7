// zip_io.h: every file of a distribution travels in a zip of its own. These two functions move files into and out of
// such zips, with what a plain zip does not carry: links, modes, dates, and the fork entries of other systems, which are
// checked and dropped here.
//
// Entries: a name that ends in "/" is a folder; "__MACOSX/._NAME" is the fork of NAME (AppleDouble); both bits of 0xa000
// in the high half of the external attributes mean a link, whose content is its target; all else is a file with st_mode
// in that half and its date in local time. A name above 256 bytes, an absolute one, one with ".." and one that leads
// through a link is refused (20002).
// A file is expanded in blocks into a temporary file beside its target, tested, and renamed over it, so that a failure
// leaves the old file whole and memory does not grow with the file.
// Results: 0, errno, a code of minizip's, or one of error_str's. No alert is raised; failures are logged.
#pragma once

#include <minizip/unzip.h>

#include <string>

// `out_dir` ends in "/". With `use_name` non-zero the entry is written as *name; with `name` not null the first entry's
// name is stored there in every case.
int zip_to_file(const std::string& zip, const std::string& out_dir, std::string* name, int use_name);

// One entry, named as the last component of `source`: stored for a link, deflated for a file; zip64 only from 4 GB on.
int file_to_zip(const std::string& source, const std::string& zip);

// The current entry of the open zip is a fork, or a link.
int unzip_resource_fork(void* zip, const std::string& path, const unz_file_info64& info);
int unzip_symlink(void* zip, const std::string& path, const unz_file_info64& info);
