// scan.h: one open preference file: a table of its lines when reading, the shared output stream when writing. The same
// sequence of calls reads every setting or writes every setting.
// Form: the text header with version 9001, then lines of a key, a blank, and a value to the end of the line.
// It is written beside and renamed, so that a crash or a full disk leaves the settings of before.
// A --pref:KEY=VALUE option wins over the file when reading.
#pragma once

#include <map>
#include <string>

enum { scan_read = 0, scan_write = 1 };

class scan_class {
  public:
    scan_class(const std::string& path, int dir);
    ~scan_class();
    scan_class(const scan_class&) = delete;
    scan_class& operator=(const scan_class&) = delete;

    int int_io(int* value, const std::string& key);          // 1 when the value was read; it is left alone otherwise
    int str_io(std::string* value, const std::string& key);  // an empty string is not written at all

    int io_dir;                               // scan_read or scan_write, for the whole life
    std::map<std::string, std::string> tags;  // what was read, by key; of two lines with one key the later

  private:
    bool find_text(const std::string& key, std::string& text) const;
    std::string written_path;  // the file that is being written; empty when none is
};
