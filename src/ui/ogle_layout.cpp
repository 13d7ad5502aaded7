#include "ui/ogle_layout.h"

#include <algorithm>

namespace {

bool ends_line(char c) {
    return c == '\r' || c == '\n';
}

bool is_blank(char c) {
    return c == ' ' || c == '\t' || c == '\v' || c == '\f';
}

// Where the line behind the one that starts at `start` begins, null if there is none.
const char* next_line(OGLE_Rec* rec, const char* start, const char* end, float width) {
    const char* at = start;
    float used = 0;
    for (;;) {
        const char* word = std::find_if_not(at, end, is_blank);
        if (word == end) return nullptr;
        if (ends_line(*word)) return word + 1;
        const char* behind = std::clamp(rec->cbs.WordBreak(rec, word, end), word + 1, end);
        used += rec->cbs.MeasureString(rec, at, behind);
        if (used > width) {
            if (word != start) return word;
            // Too wide for a line of its own. A line takes at least one byte, or there would be no end of lines.
            const int fit = std::max(rec->cbs.FitStringFwd(rec, word, behind, width), 1);
            if (fit < behind - word) return word + fit;
        }
        at = behind;
    }
}

}  // namespace

ogle_text ogle_text_of(OGLE_Rec* rec) {
    ogle_text text = {nullptr, nullptr};
    rec->cbs.GetText(rec, &text.begin, &text.end);
    return text;
}

int ogle_line_count(const OGLE_Rec* rec) {
    return static_cast<int>(rec->line_starts.size());
}

ogle_line ogle_line_at(OGLE_Rec* rec, int index) {
    const ogle_text text = ogle_text_of(rec);
    const bool last = index + 1 >= ogle_line_count(rec);
    const auto held_start = [&](int i) {  // the text may be shorter than at the last layout
        return std::min(rec->line_starts[static_cast<std::size_t>(i)], text.size());
    };
    const int begin = held_start(index), end = last ? text.size() : held_start(index + 1);
    if (last || begin == end) return {begin, end, end};
    return {begin, ends_line(text.begin[end - 1]) ? end - 1 : end, end - 1};
}

int ogle_line_of(const OGLE_Rec* rec, int position) {
    const auto& starts = rec->line_starts;
    const auto behind = std::upper_bound(starts.begin() + 1, starts.end(), position);
    return static_cast<int>(behind - starts.begin()) - 1;
}

void ogle_shift_lines(OGLE_Rec* rec, int start, int end, int added) {
    auto& starts = rec->line_starts;
    const auto first = std::lower_bound(starts.begin() + 1, starts.end(), start);
    const auto kept = std::lower_bound(first, starts.end(), end);
    for (auto each = kept; each != starts.end(); ++each)
        *each += start + added - end;
    starts.erase(first, kept);
}

void OGLE_RepaginateInternal(OGLE_Rec* rec, int from, int to) {
    float bounds[4];
    rec->cbs.GetLogicalBounds(rec, bounds);
    const ogle_text text = ogle_text_of(rec);
    const auto old = rec->line_starts;
    // A line ends where the first word of the next one no longer fits, so the line before the one that is edited may
    // now end elsewhere; and an edit right at a line's start may have been the end of that word.
    const int edited = ogle_line_of(rec, std::max(from - 1, 0));
    rec->line_starts.resize(static_cast<std::size_t>(std::max(edited - 1, 0)) + 1);
    auto same = std::lower_bound(old.begin() + 1, old.end(), to);
    const char* line = text.begin + rec->line_starts.back();
    while ((line = next_line(rec, line, text.end, bounds[2] - bounds[0])) != nullptr) {
        const int start = static_cast<int>(line - text.begin);
        same = std::lower_bound(same, old.end(), start);
        if (same != old.end() && *same == start) {
            rec->line_starts.insert(rec->line_starts.end(), same, old.end());
            break;
        }
        rec->line_starts.push_back(start);
    }
    rec->cbs.SetLogicalHeight(rec, static_cast<float>(ogle_line_count(rec)) * rec->cbs.GetLineHeight(rec));
}
