// file_reader.h: one file, read by read() from its start to its end. Nothing is mapped: under a mapping a bad sector,
// or a file that another program cuts short meanwhile, ends the whole program.
// Only a regular file is ever opened: a pipe would wait for its other end, a device would do who knows what.
// Errors: nothing throws; error() tells, for error_str: ENOENT and ENOTDIR where nothing is there, EISDIR for a folder,
// err_no_file for any other thing that is none, else why the file cannot be read.
// Threads: an object belongs to one thread.
#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <string>

#include "platform/file_identity.h"

class file_reader {
  public:
    enum class last_link { followed, refused };  // refused: ELOOP
    // `path` is taken as it stands, app_path is not added.
    explicit file_reader(const std::string& path, last_link link = last_link::followed);
    ~file_reader();
    file_reader(const file_reader&) = delete;
    file_reader& operator=(const file_reader&) = delete;

    int error() const { return err; }
    const struct stat& facts() const { return at_start; }  // before the first byte
    int descriptor() const { return fd; }                  // -1 where it could not be opened

    // The next bytes: how many, at most `room` and fewer only at the end; 0 at the end; -1 with error().
    std::ptrdiff_t read(unsigned char* to, std::size_t room);
    // Whether the file is another one now, or another size or date, than before the first byte was read.
    bool changed_meanwhile() const;

  private:
    int fd = -1;
    int err = 0;
    struct stat at_start {};
};
