// scratch.h: a private folder for one test, gone at its end, and a few ways to fill it.
#pragma once

#include <cstddef>
#include <string>

// As on a disk that is nearly full: from here on no file of this process grows past `bytes` (EFBIG).
void let_no_file_grow_past(std::size_t bytes);

class scratch {
  public:
    scratch();
    ~scratch();
    scratch(const scratch&) = delete;
    scratch& operator=(const scratch&) = delete;

    const std::string& path() const { return folder; }  // ends in "/"
    std::string operator/(const std::string& name) const { return folder + name; }
    // Makes the folders on the way. Returns the full path.
    std::string write(const std::string& name, const std::string& bytes) const;
    static std::string read(const std::string& full);  // empty when it cannot be read
    static bool exists(const std::string& full);       // a link counts, wherever it points

  private:
    std::string folder;
};
