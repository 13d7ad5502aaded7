// ogle_rec.h: what the editor engine keeps, and the callbacks by which it reaches its host's text and screen. ogle.h
// tells the whole; the line table alone is ogle_layout.h.
// Positions are byte offsets; geometry is in the host's units, y up.
#pragma once

#include <vector>

struct OGLE_Rec;

// In the order of the record. Each gets the record first.
struct OGLE_callbacks {
    void (*GetVisibleBounds)(OGLE_Rec*, float* bounds);  // left, bottom, right, top
    void (*GetLogicalBounds)(OGLE_Rec*, float* bounds);  // the same for the whole text, in scrolled position
    void (*SetLogicalHeight)(OGLE_Rec*, float height);   // told after a layout
    // The scroll position wanted: how far the left and top of the logical bounds are to lie below those of the visible.
    void (*ScrollTo)(OGLE_Rec*, float* xy);
    void (*GetText)(OGLE_Rec*, const char** begin, const char** end);
    void (*ReplaceText)(OGLE_Rec*, int start, int end, const char* begin, const char* end_of_new);
    float (*GetLineHeight)(OGLE_Rec*);
    float (*MeasureString)(OGLE_Rec*, const char* begin, const char* end);
    int (*FitStringFwd)(OGLE_Rec*, const char* begin, const char* end, float width);      // bytes from begin that fit
    int (*FitStringRev)(OGLE_Rec*, const char* begin, const char* end, float width);      // bytes before end that fit
    void (*DrawString)(OGLE_Rec*, const char* begin, const char* end, float x, float y);  // x, y: line's left bottom
    void (*DrawSelection)(OGLE_Rec*, float* rect);  // left, bottom, right, top; without width a caret
    // End of the word that starts at begin. It stops at white space and looks no further than the byte behind the word.
    const char* (*WordBreak)(OGLE_Rec*, const char* begin, const char* end);
};

struct OGLE_Rec {
    OGLE_callbacks cbs;
    void* ref;                           // the caller's
    std::vector<int> line_starts = {0};  // byte offset of each line's first character
    int sel_start = 0, sel_end = 0;
    int active_end = 1;     // the end that moves: 1 sel_end, 0 sel_start
    float caret_x = -1.0f;  // column kept over moves up and down; -1 for none
};
