// The editor engine. The first byte is the width of the page; then each command is two bytes, or one for a key. After every
// edit the lines must be those of a layout made anew.
#include <algorithm>
#include <cmath>
#include <vector>

#include "fuzz/fuzz.h"
#include "ui/ogle.h"

namespace {

class page : public OGLE {
  public:
    explicit page(int page_width) : width(static_cast<float>(page_width)) { Repaginate(); }

    void replace(int start, int end, std::string_view bytes) {
        DoReplaceText(start, end, bytes.data(), bytes.data() + bytes.size());
    }
    void check() {
        int start = 0, end = 0;
        GetSelection(&start, &end);
        must(start >= 0 && start <= end && end <= static_cast<int>(text.size()), "the selection lies in the text");
        must(std::isfinite(scroll[0]) && std::isfinite(scroll[1]), "the page is scrolled to some place");
        const std::vector<int> lines = rec->line_starts;
        Repaginate();
        must(lines == rec->line_starts, "the lines after an edit are those of a new layout");
        must(lines[0] == 0 && std::adjacent_find(lines.begin(), lines.end(), std::greater_equal<>()) == lines.end(),
             "each line begins behind the one before");
    }

  protected:
    void GetVisibleBoundsCB(float* bounds) override { set(bounds, 0, 0, 50, 35); }
    void GetLogicalBoundsCB(float* bounds) override {
        set(bounds, -scroll[0], 35 - scroll[1] - height, width - scroll[0], 35 - scroll[1]);
    }
    void SetLogicalHeightCB(float told) override { height = told; }
    void ScrollToCB(float* xy) override { std::copy(xy, xy + 2, scroll); }
    void GetTextCB(const char** begin, const char** end) override { *end = (*begin = text.data()) + text.size(); }
    void ReplaceTextCB(int start, int end, const char* begin, const char* end_of_new) override {
        must(start >= 0 && start <= end && end <= static_cast<int>(text.size()), "an edit lies in the text");
        std::string made(text.begin(), text.begin() + start);
        made.append(begin, end_of_new).append(text.begin() + end, text.end());
        text = std::vector<char>(made.begin(), made.end());  // no byte of room behind its end
    }
    float GetLineHeightCB() override { return 10; }
    float MeasureStringCB(const char* begin, const char* end) override {
        must(begin <= end && begin >= text.data() && end <= text.data() + text.size(), "only the text is measured");
        return static_cast<float>(6 * (end - begin) - 6 * std::count(begin, end, '\t'));
    }
    int FitStringFwdCB(const char* begin, const char* end, float room) override {
        must(begin <= end, "what is to fit is no less than nothing");
        const char* at = begin;
        for (float used = 0; at < end && (used += *at == '\t' ? 0.0f : 6.0f) <= room;)
            ++at;
        return static_cast<int>(at - begin);
    }
    int FitStringRevCB(const char*, const char*, float) override { return 0; }
    void DrawStringCB(const char* begin, const char* end, float, float) override { MeasureStringCB(begin, end); }
    void DrawSelectionCB(float* rect) override { must(rect[0] <= rect[2], "a selection has no negative width"); }
    const char* WordBreakCB(const char* begin, const char* end) override {
        const std::string blanks = " \t\r\n";
        return std::find_first_of(begin, end, blanks.begin(), blanks.end());
    }

  private:
    static void set(float* bounds, float left, float bottom, float right, float top) {
        bounds[0] = left, bounds[1] = bottom, bounds[2] = right, bounds[3] = top;
    }
    std::vector<char> text;
    float width, height = 10;
    float scroll[2] = {0, 0};
};

// A command with its operand, each any byte: places are taken a little beyond all sides.
void act(page& p, unsigned char what, unsigned char operand) {
    const float x = static_cast<float>(operand % 16) * 6 - 12, y = static_cast<float>(operand) / 16 * 5 - 10;
    switch (what % 8) {
        case 0:
            return p.Click(x, y, operand & 1);
        case 1:
            return p.Drag(x, y);
        case 2:
            return p.SetSelection(operand % 40 - 4, operand / 4 - 4);
        case 3:
            return p.replace(operand % 32 - 2, operand / 4 - 2, "one two\rthree");
        case 4:
            return p.replace(operand % 32 - 2, operand / 4 - 2, "");
        case 5:
            return p.replace(operand, operand, "longer than a narrow page is wide ");
        case 6:
            return p.Key(static_cast<char>(28 + operand % 4), operand & 4);
        default:
            return p.RevealSelection();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0 || size > 600) return 0;  // every edit is checked against all of the text
    page p(data[0]);
    for (std::size_t at = 1; at < size; ++at) {
        if (data[at] >= 0xF8 && at + 1 < size) {
            act(p, data[at], data[at + 1]);
            ++at;
        } else {
            p.Key(static_cast<char>(data[at]), 0);
        }
        p.check();
        p.Draw(data[at] & 1);
    }
    return 0;
}
