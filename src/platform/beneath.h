// beneath.h: file work below one folder that no path can leave: not by "..", not by an absolute name, and not through a
// link on the way, whoever laid it. A link on the way that stays inside is followed; the last component never is.
// The kernel resolves such a path in one go where it can (openat2); elsewhere, as in a sandbox that forbids the call,
// the same is done here, component by component. Considered and dropped: comparing real paths, which leaves a gap
// between the look and the act.
// Results: 0 or errno. EXDEV: the path leaves the folder. Nothing throws, nothing is logged.
// Threads: an object belongs to one thread.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

// The rule for paths that come from outside: relative, no empty, "." or ".." component, no NUL.
bool path_stays_below(std::string_view path);

class beneath_folder {
  public:
    explicit beneath_folder(const std::string& path);  // chosen by the user: may lead anywhere
    // A folder below another; "" is that folder itself.
    beneath_folder(const beneath_folder& above, const std::string& path);
    ~beneath_folder();
    beneath_folder(const beneath_folder&) = delete;
    beneath_folder& operator=(const beneath_folder&) = delete;

    int error() const { return err; }  // why it could not be opened; every call below answers with it then

    // A path by which this process reaches the very folder, whatever became of its name; ends in "/".
    std::string way_through_kernel() const { return "/proc/self/fd/" + std::to_string(fd) + "/"; }
    int make_file(const std::string& path, mode_t mode, int& fd) const;  // a new one, for writing; EEXIST
    int append(const std::string& path, const std::string& text) const;  // to a file that is made if it is missing
    int make_folder(const std::string& path, mode_t mode) const;
    int make_link(const std::string& target, const std::string& path) const;
    int remove_file(const std::string& path) const;    // or a link
    int remove_folder(const std::string& path) const;  // an empty one
    int rename(const std::string& from, const std::string& to) const;
    // Gives the file a second name, or, where the disk knows no such thing, that name instead. EEXIST: it is taken.
    int keep_as(const std::string& path, const std::string& kept) const;
    int look(const std::string& path, struct stat& facts) const;
    int change_mode(const std::string& path, mode_t mode) const;  // of a file; a link is ELOOP
    int sync_volume() const;  // all that was written to the volume of this folder is on the disk

  private:
    template <class action>
    int in_parent(const std::string& path, action act) const;

    int fd = -1;
    int err = 0;
};

// For tests: resolve here although the kernel could.
extern bool beneath_without_kernel;
