// folder_list.h: the folders below one folder, as a list that is used by mouse and keyboard: a row is entered by a
// click or by Return, arrows and page keys move the marked row, letters go to the next name that begins so, Backspace
// goes up.
#pragma once

#include <string>
#include <vector>

// Bytes that no path of the program may hold.
bool is_usable_name(const std::string& name);

class folder_list {
  public:
    bool open(const std::string& path);  // whole, with its "/"; false for a folder that may not be opened
    void show_hidden(bool hidden);
    // Draws the list in its place in the window. True in a frame in which another folder was opened.
    bool draw();
    const std::string& folder() const { return path_now; }

  private:
    void read_names(const std::string& marked_name);  // its row is marked, or the first one
    bool enter(std::size_t row);
    bool use_key(int character, int vkey);
    bool go_to(const std::string& prefix);

    std::string path_now;
    std::vector<std::string> names;  // "..", then by letters, upper and lower case alike
    bool hidden = false;             // names that begin with "." too
    int marked = 0, first_row = 0;   // the row that Return enters; the one at the top
    std::string typed;               // letters that came shortly one behind the other
    float typed_at = 0;
    int wheel_seen = 0;
};
