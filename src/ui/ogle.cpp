#include "ui/ogle.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "display/virtual_keys.h"
#include "ui/ogle_layout.h"

namespace {

// Bounds and rectangles.
enum : int { left = 0, bottom = 1, right = 2, top = 3 };

float held(float value, float low, float high) {
    return std::max(low, std::min(value, high));
}

int active_position(const OGLE_Rec* rec) {
    return rec->active_end ? rec->sel_end : rec->sel_start;
}

// Holds both ends to the text and puts them in order; the end that moves stays the one that moves.
void OGLE_NormalizeSelectionInternal(OGLE_Rec* rec) {
    const int size = ogle_text_of(rec).size();
    rec->sel_start = std::clamp(rec->sel_start, 0, size);
    rec->sel_end = std::clamp(rec->sel_end, 0, size);
    if (rec->sel_start <= rec->sel_end) return;
    std::swap(rec->sel_start, rec->sel_end);
    rec->active_end = !rec->active_end;
}

void select(OGLE_Rec* rec, int start, int end) {
    rec->sel_start = start;
    rec->sel_end = end;
    rec->active_end = 1;
    OGLE_NormalizeSelectionInternal(rec);
}

void move_active(OGLE_Rec* rec, int position) {
    (rec->active_end ? rec->sel_end : rec->sel_start) = position;
    OGLE_NormalizeSelectionInternal(rec);
}

float measure(OGLE_Rec* rec, int begin, int end) {
    const ogle_text text = ogle_text_of(rec);
    return rec->cbs.MeasureString(rec, text.begin + begin, text.begin + end);
}

// The position on a line that stands at `x`, counted from the line's left.
int position_on_line(OGLE_Rec* rec, int index, float x) {
    const ogle_text text = ogle_text_of(rec);
    const ogle_line line = ogle_line_at(rec, index);
    const int fit = rec->cbs.FitStringFwd(rec, text.begin + line.begin, text.begin + line.last_caret, x);
    return std::clamp(line.begin + fit, line.begin, line.last_caret);
}

int OGLE_CoordToCharPos(OGLE_Rec* rec, float x, float y) {
    float bounds[4];
    rec->cbs.GetLogicalBounds(rec, bounds);
    x = held(x, bounds[left], bounds[right]);
    y = held(y, bounds[bottom], bounds[top]);
    const float line = std::floor((bounds[top] - y) / rec->cbs.GetLineHeight(rec));
    const int index = static_cast<int>(held(line, 0, static_cast<float>(ogle_line_count(rec) - 1)));
    return position_on_line(rec, index, x - bounds[left]);
}

// The position `lines` below another one, in the column that the first of a run of moves set out from.
int OGLE_CharPosVerticalAdjust(OGLE_Rec* rec, int position, int lines) {
    const int line = ogle_line_of(rec, position);
    if (rec->caret_x < 0) rec->caret_x = measure(rec, ogle_line_at(rec, line).begin, position);
    if (line + lines < 0) return 0;
    if (line + lines >= ogle_line_count(rec)) return ogle_text_of(rec).size();
    return position_on_line(rec, line + lines, rec->caret_x);
}

void move_caret(OGLE_Rec* rec, int position, int shift) {
    if (shift)
        move_active(rec, position);
    else
        select(rec, position, position);
}

void move_sideways(OGLE_Rec* rec, int step, int shift) {
    const bool collapse = !shift && rec->sel_start != rec->sel_end;
    move_caret(rec, collapse ? (step < 0 ? rec->sel_start : rec->sel_end) : active_position(rec) + step, shift);
}

void replace_selection(OGLE_Rec* rec, const char* begin, const char* end) {
    const int behind = rec->sel_start + static_cast<int>(end - begin);
    OGLE_ReplaceText(rec, rec->sel_start, rec->sel_end, begin, end);
    select(rec, behind, behind);
}

// Left and right end of what the selection covers of a line, from its left; both the same where it covers nothing.
std::pair<float, float> covered(OGLE_Rec* rec, int index) {
    const ogle_line line = ogle_line_at(rec, index);
    const auto x_of = [&](int position) {
        return measure(rec, line.begin, std::clamp(position, line.begin, line.end));
    };
    return {x_of(rec->sel_start), x_of(rec->sel_end)};
}

void draw_selected(OGLE_Rec* rec, int index, float x, float line_top, float line_height) {
    const auto [from, to] = covered(rec, index);
    const bool caret =
        rec->sel_start == rec->sel_end && ogle_line_of(rec, rec->sel_end) == index;  // a rectangle without width
    if (from == to && !caret) return;
    float rect[4] = {x + from, line_top - line_height, x + to, line_top};
    rec->cbs.DrawSelection(rec, rect);
}

// By how much a stretch must move to lie between two bounds.
float way_back(float low, float high, float low_bound, float high_bound) {
    if (high > high_bound) return high_bound - high;
    return low < low_bound ? low_bound - low : 0;
}

OGLE& host(OGLE_Rec* rec) {
    return *static_cast<OGLE*>(rec->ref);
}

}  // namespace

OGLE_Rec* OGLE_Create(const OGLE_callbacks* cbs, void* ref) {
    return new OGLE_Rec{*cbs, ref};
}

void OGLE_Destroy(OGLE_Rec* rec) {
    delete rec;
}

void* OGLE_GetRef(OGLE_Rec* rec) {
    return rec->ref;
}

void OGLE_Draw(OGLE_Rec* rec, int active) {
    OGLE_NormalizeSelectionInternal(rec);
    float bounds[4], seen[4];
    rec->cbs.GetLogicalBounds(rec, bounds);
    rec->cbs.GetVisibleBounds(rec, seen);
    const ogle_text text = ogle_text_of(rec);
    const float height = rec->cbs.GetLineHeight(rec);
    for (int pass = active ? 0 : 1; pass < 2; ++pass)  // all of the selection lies behind all of the text
        for (int i = 0; i < ogle_line_count(rec); ++i) {
            const float line_top = bounds[top] - static_cast<float>(i) * height;
            if (line_top <= seen[bottom] || line_top - height >= seen[top]) continue;
            const ogle_line line = ogle_line_at(rec, i);
            if (pass == 0)
                draw_selected(rec, i, bounds[left], line_top, height);
            else
                rec->cbs.DrawString(rec, text.begin + line.begin, text.begin + line.end, bounds[left],
                                    line_top - height);
        }
}

void OGLE_Click(OGLE_Rec* rec, float x, float y, int extend) {
    OGLE_NormalizeSelectionInternal(rec);
    rec->caret_x = -1;
    const int position = OGLE_CoordToCharPos(rec, x, y);
    if (!extend) return select(rec, position, position);
    rec->active_end = position - rec->sel_start >= rec->sel_end - position;
    move_active(rec, position);
}

void OGLE_Drag(OGLE_Rec* rec, float x, float y) {
    OGLE_NormalizeSelectionInternal(rec);
    rec->caret_x = -1;
    move_active(rec, OGLE_CoordToCharPos(rec, x, y));
    OGLE_RevealSelection(rec);
}

void OGLE_Key(OGLE_Rec* rec, char c, int shift) {
    OGLE_NormalizeSelectionInternal(rec);
    const bool vertical = c == char_up || c == char_down;
    if (!vertical) rec->caret_x = -1;
    if (vertical) {
        move_caret(rec, OGLE_CharPosVerticalAdjust(rec, active_position(rec), c == char_up ? -1 : 1), shift);
    } else if (c == char_left || c == char_right) {
        move_sideways(rec, c == char_left ? -1 : 1, shift);
    } else if (c == char_back) {
        if (rec->sel_start == rec->sel_end && rec->sel_start == 0) return;
        if (rec->sel_start == rec->sel_end) --rec->sel_start;
        replace_selection(rec, &c, &c);
    } else {
        replace_selection(rec, &c, &c + 1);
    }
    OGLE_RevealSelection(rec);
}

void OGLE_Repaginate(OGLE_Rec* rec) {
    rec->line_starts = {0};
    OGLE_RepaginateInternal(rec, 0, 0);
}

void OGLE_ReplaceText(OGLE_Rec* rec, int start, int end, const char* begin, const char* end_of_new) {
    const int size = ogle_text_of(rec).size();
    start = std::clamp(start, 0, size);
    end = std::clamp(end, start, size);
    const int added = static_cast<int>(end_of_new - begin);
    rec->cbs.ReplaceText(rec, start, end, begin, end_of_new);
    ogle_shift_lines(rec, start, end, added);
    OGLE_RepaginateInternal(rec, start, start + added);
    for (int* each : {&rec->sel_start, &rec->sel_end})
        if (*each > start) *each = *each < end ? start + added : *each + start + added - end;
    OGLE_NormalizeSelectionInternal(rec);
}

void OGLE_SetSelection(OGLE_Rec* rec, int start, int end) {
    rec->caret_x = -1;
    select(rec, start, end);
}

void OGLE_GetSelection(OGLE_Rec* rec, int* start, int* end) {
    OGLE_NormalizeSelectionInternal(rec);
    *start = rec->sel_start;
    *end = rec->sel_end;
}

void OGLE_RevealSelection(OGLE_Rec* rec) {
    OGLE_NormalizeSelectionInternal(rec);
    float bounds[4], seen[4];
    rec->cbs.GetLogicalBounds(rec, bounds);
    rec->cbs.GetVisibleBounds(rec, seen);
    const int position = active_position(rec), line = ogle_line_of(rec, position);
    const float x = bounds[left] + measure(rec, ogle_line_at(rec, line).begin, position);
    const float height = rec->cbs.GetLineHeight(rec);
    const float line_top = bounds[top] - static_cast<float>(line) * height;
    const float dx = way_back(x, x, seen[left], seen[right]);
    const float dy = way_back(line_top - height, line_top, seen[bottom], seen[top]);
    if (dx == 0 && dy == 0) return;
    float xy[2] = {seen[left] - bounds[left] - dx, seen[top] - bounds[top] - dy};
    rec->cbs.ScrollTo(rec, xy);
}

const OGLE_callbacks OGLE::to_methods = {
    [](OGLE_Rec* r, float* bounds) { host(r).GetVisibleBoundsCB(bounds); },
    [](OGLE_Rec* r, float* bounds) { host(r).GetLogicalBoundsCB(bounds); },
    [](OGLE_Rec* r, float height) { host(r).SetLogicalHeightCB(height); },
    [](OGLE_Rec* r, float* xy) { host(r).ScrollToCB(xy); },
    [](OGLE_Rec* r, const char** begin, const char** end) { host(r).GetTextCB(begin, end); },
    [](OGLE_Rec* r, int start, int end, const char* begin, const char* end_of_new) {
        host(r).ReplaceTextCB(start, end, begin, end_of_new);
    },
    [](OGLE_Rec* r) { return host(r).GetLineHeightCB(); },
    [](OGLE_Rec* r, const char* begin, const char* end) { return host(r).MeasureStringCB(begin, end); },
    [](OGLE_Rec* r, const char* begin, const char* end, float width) {
        return host(r).FitStringFwdCB(begin, end, width);
    },
    [](OGLE_Rec* r, const char* begin, const char* end, float width) {
        return host(r).FitStringRevCB(begin, end, width);
    },
    [](OGLE_Rec* r, const char* begin, const char* end, float x, float y) { host(r).DrawStringCB(begin, end, x, y); },
    [](OGLE_Rec* r, float* rect) { host(r).DrawSelectionCB(rect); },
    [](OGLE_Rec* r, const char* begin, const char* end) { return host(r).WordBreakCB(begin, end); },
};
