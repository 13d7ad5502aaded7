// ogle_layout.h: the line table of the editor engine. Private to ogle*.cpp.
// A line is laid out from its start and the text behind it alone. That is what lets a layout stop where it meets a line
// start that the table held before the edit.
#pragma once

#include "ui/ogle_rec.h"

struct ogle_text {
    const char *begin, *end;
    int size() const { return static_cast<int>(end - begin); }
};
ogle_text ogle_text_of(OGLE_Rec* rec);

// One line, in offsets.
struct ogle_line {
    int begin;
    int end;         // of what is drawn: without the CR or LF
    int last_caret;  // the last position that is shown on this line: behind a wrapped line it is the next line's first
};
ogle_line ogle_line_at(OGLE_Rec* rec, int index);
int ogle_line_of(const OGLE_Rec* rec, int position);
int ogle_line_count(const OGLE_Rec* rec);

// `start` to `end` of the old text became `added` bytes: moves the table with the text behind them.
void ogle_shift_lines(OGLE_Rec* rec, int start, int end, int added);
// Rebuilds the table where it depends on `from` to `to`, the bytes that are new.
void OGLE_RepaginateInternal(OGLE_Rec* rec, int from, int to);
