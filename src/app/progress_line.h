// progress_line.h: progress on a terminal, as one line that is redrawn in place, or elsewhere as plain lines that come
// at most every five seconds or five percent, and never more than one a second.
#pragma once

#include <cstdio>
#include <string>

class progress_line {
  public:
    void open(std::FILE* out, bool in_place);
    // `share` 0 to 1, negative while the end is not known. `now` in seconds. A terminal's line is redrawn at most ten
    // times a second.
    // Where the line is too narrow, `item` loses its middle first.
    void show(double share, const std::string& text, const std::string& item, double now);
    void show_last(double share, const std::string& text);  // whatever the time; a line of its own
    void clear();  // takes the line off the terminal, so that something else can be printed
    void restart() { last_time = -1, last_share = -1; }  // another kind of work begins

    static std::string bar(double share, int width);  // "[#####.....]"
    static int terminal_columns();                    // 80 where it is not known

  private:
    void draw(double share, const std::string& text, const std::string& item);
    std::FILE* stream = nullptr;
    bool on_terminal = false;
    bool drawn = false;
    double last_time = -1;
    double last_share = -1;
};

// The text cut to `columns` characters in its middle, so that both ends can be read. UTF-8 sequences stay whole.
std::string cut_middle(const std::string& text, int columns);
