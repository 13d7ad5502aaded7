// zip_io.h: every file of a distribution travels in a zip of its own. These two functions move files into and out of
// such zips, with what a plain zip does not carry: links, modes, dates, and the fork entries of other systems, which
// are checked and dropped here.
//
// Entries: a name that ends in "/" is a folder; "__MACOSX/._NAME" is the fork of NAME (AppleDouble); both bits of
// 0xa000 in the high half of the external attributes mean a link, whose content is its target; all else is a file with
// st_mode in that half and its date in local time. A name above 256 bytes, an absolute one, one with ".." and one that
// leads through a link is refused (20002).
// Nothing is written outside the folder that was given, whatever links lie on the way (20016).
// A file is expanded in blocks into a temporary file beside its target, tested, and renamed over it, so that a failure
// leaves the old file whole and memory does not grow with the file.
// Results: 0, errno, a code of minizip's, or one of error_str's. No alert is raised; failures are logged.
#pragma once

#include <minizip/unzip.h>

#include <cstdint>
#include <string>

class beneath_folder;

// What the archive of one file must hold. Only a file that keeps the promise takes the place of an old one.
struct zip_promise {
    std::string name;  // of its one file or link; its fork is passed over, with anything else all is refused (20015)
    std::string signature;                  // of the file's bytes or the link's target (20015); empty: any
    std::uint64_t most_bytes = UINT64_MAX;  // an entry that claims more is refused before anything is written (20015)
    std::string under = {};                 // the path below the root that it gets; empty: its name, in the folder
};

// Expands the one file of the archive into `folder` below `root`, "" for the root itself; no "/" at its end.
int zip_to_file(const std::string& zip, const beneath_folder& root, const std::string& folder,
                const zip_promise& promise);

// Whether a result of zip_to_file tells of a bad archive, which another server may have in order, and not of this
// machine.
bool is_bad_archive(int result);

// The archive at `path` goes to its end, as one that was not received whole does not.
bool is_whole_archive(const std::string& path);

// `out_dir` ends in "/". With `use_name` non-zero the entry is written as *name; with `name` not null the first entry's
// name is stored there in every case.
int zip_to_file(const std::string& zip, const std::string& out_dir, std::string* name, int use_name);

// What went into a zip: the signature and number of the very bytes, whatever has become of the file since.
struct zipped_file {
    std::string signature;
    std::uint64_t bytes = 0;
};

// One entry, named as the last component of `source`: stored for a link, deflated for a file; zip64 only from 4 GB on.
// A file that changed while it was read gives 20018 (err_file_changed) and no zip. `facts` may be null.
int file_to_zip(const std::string& source, const std::string& zip, zipped_file* facts = nullptr);

// The current entry of the open zip is a fork; `path` is for the log.
int unzip_resource_fork(void* zip, const std::string& path, const unz_file_info64& info);
