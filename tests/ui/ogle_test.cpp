// The editor engine on a page without a screen: an "i" is 3 wide, a tab nothing, any other byte 6; lines are 10 apart.
#include "ui/ogle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "display/virtual_keys.h"

namespace {

class page : public OGLE {
  public:
    explicit page(const std::string& content, float width_of_lines = 60) : text(content), width(width_of_lines) {
        Repaginate();
    }
    const std::vector<int>& lines() const { return rec->line_starts; }
    std::vector<int> selection() {
        std::vector<int> ends(2);
        GetSelection(&ends[0], &ends[1]);
        return ends;
    }
    void keys(const std::string& all, int shift = 0) {
        for (const char c : all)
            Key(c, shift);
    }

    std::string text;
    float width, seen_dx = 1000, seen_dy = 1000;
    float scroll[2] = {0, 0}, height = 0;

  protected:
    void GetVisibleBoundsCB(float* bounds) override { set(bounds, 0, 0, seen_dx, seen_dy); }
    void GetLogicalBoundsCB(float* bounds) override {
        const float top = seen_dy - scroll[1];
        set(bounds, -scroll[0], top - std::max(height, 10.0f), width - scroll[0], top);
    }
    void SetLogicalHeightCB(float told) override { height = told; }
    void ScrollToCB(float* xy) override { std::copy(xy, xy + 2, scroll); }
    void GetTextCB(const char** begin, const char** end) override { *end = (*begin = text.data()) + text.size(); }
    void ReplaceTextCB(int start, int end, const char* begin, const char* end_of_new) override {
        text.replace(text.begin() + start, text.begin() + end, begin, end_of_new);
    }
    float GetLineHeightCB() override { return 10; }
    float MeasureStringCB(const char* begin, const char* end) override {
        return static_cast<float>(6 * (end - begin) - 3 * std::count(begin, end, 'i') -
                                  6 * std::count(begin, end, '\t'));
    }
    int FitStringFwdCB(const char* begin, const char* end, float room) override {
        const char* at = begin;
        while (at < end && MeasureStringCB(begin, at + 1) <= room)
            ++at;
        return static_cast<int>(at - begin);
    }
    int FitStringRevCB(const char*, const char*, float) override { return 0; }
    void DrawStringCB(const char*, const char*, float, float) override {}
    void DrawSelectionCB(float*) override {}
    const char* WordBreakCB(const char* begin, const char* end) override {
        const std::string blanks = " \t\r\n";
        return std::find_first_of(begin, end, blanks.begin(), blanks.end());
    }

  private:
    static void set(float* bounds, float left, float bottom, float right, float top) {
        bounds[0] = left, bounds[1] = bottom, bounds[2] = right, bounds[3] = top;
    }
};

TEST(Ogle, LinesEndAtLineEndsBetweenWordsAndInWordsThatAreTooLong) {
    const struct {
        const char* text;
        std::vector<int> starts;  // for lines of ten bytes
    } cases[] = {
        {"ten bytes     more", {0, 14}},         {"one two three", {0, 8}},         {"a\rb\n\n", {0, 2, 4, 5}},
        {"abcdefghijklmnopqrstuv", {0, 10, 20}}, {"ab abcdefghklm no", {0, 3, 13}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(page(c.text).lines(), c.starts) << c.text;
    EXPECT_EQ(page("ab\nc", 2).lines(), (std::vector<int>{0, 1, 3})) << "not even one byte fits";
}

// Words, blanks of both widths, line ends, and now and then a word that is longer than a line.
std::string random_text(std::mt19937& random, unsigned long most) {
    static const std::string letters = "aaaaaaiiiixyz    \t\t\n\r";
    std::string text;
    for (unsigned long left = random() % (most + 1); left > 0; --left)
        text +=
            random() % 40 == 0 ? std::string(random() % 40, 'w') : std::string(1, letters[random() % letters.size()]);
    return text;
}

TEST(Ogle, AnEditLeavesTheLinesOfAFullLayout) {
    std::mt19937 random(20260);
    for (int round = 0; round < 150; ++round) {
        page edited(random_text(random, 120), static_cast<float>(10 + random() % 80));
        for (int edit = 0; edit < 30; ++edit) {
            const std::string before = edited.text, added = random_text(random, random() % 3 ? 3 : 40);
            const int size = static_cast<int>(before.size());
            // Line starts and the bytes beside them are where it goes wrong.
            const int near = edited.lines()[random() % edited.lines().size()] + static_cast<int>(random() % 5) - 2;
            const int start = std::clamp(near, 0, size);
            const int end = std::min(size, start + static_cast<int>(random() % 4 ? random() % 4 : random() % 60));
            edited.DoReplaceText(start, end, added.data(), added.data() + added.size());
            ASSERT_EQ(edited.lines(), page(edited.text, edited.width).lines())
                << "'" << before << "' " << start << " to " << end << " '" << added << "'";
        }
    }
}

TEST(Ogle, KeysMoveExtendAndReplace) {
    const std::string l(1, char_left), r(1, char_right), u(1, char_up), d(1, char_down), b(1, char_back);
    const struct {
        const char* name;
        int start, end;  // start behind end: the start moves
        std::string keys;
        int shift;
        std::vector<int> selection;
        const char* text;
    } cases[] = {
        {"left collapses", 1, 4, l, 0, {1, 1}, "abcdef"},
        {"no further right", 5, 5, r + r, 1, {5, 6}, "abcdef"},
        {"the ends cross", 2, 4, l + l + l, 1, {1, 2}, "abcdef"},
        {"a byte replaces", 1, 4, "xy", 0, {3, 3}, "axyef"},
        {"backspace deletes the selection", 4, 1, b, 0, {1, 1}, "aef"},
        {"backspace at the start", 0, 0, b, 0, {0, 0}, "abcdef"},
        {"up from the first line", 3, 3, u, 0, {0, 0}, "abcdef"},
        {"down from the last line", 3, 3, d, 1, {3, 6}, "abcdef"},
        {"held to the text", -5, 99, "", 0, {0, 6}, "abcdef"},
        {"the column over a shorter line", 5, 5, d + d, 0, {15, 15}, "abcdef\nab\nabcdef"},
        {"a new column", 15, 15, l + u + u, 0, {4, 4}, "abcdef\nab\nabcdef"},
    };
    for (const auto& c : cases) {
        page p(std::string(c.text).find('\n') != std::string::npos ? c.text : "abcdef");
        p.SetSelection(c.start, c.end);
        p.keys(c.keys, c.shift);
        EXPECT_EQ(p.selection(), c.selection) << c.name;
        EXPECT_EQ(p.text, c.text) << c.name;
    }
}

TEST(Ogle, AClickGoesToTheByteUnderItOnItsOwnLine) {
    page p("one two three\nabc");  // lines from 0, 8 and 14
    const float top = p.seen_dy;
    const struct {
        float x, below_top;
        int position;
    } clicks[] = {{13, 5, 2}, {-50, 5, 0}, {500, 5, 7}, {13, 15, 10}, {500, 15, 13}, {500, 99, 17}, {0, -50, 0}};
    for (const auto& click : clicks) {
        p.Click(click.x, top - click.below_top, 0);
        EXPECT_EQ(p.selection(), (std::vector<int>{click.position, click.position}))
            << click.x << "," << click.below_top;
    }
    p.Click(12, top - 5, 0);
    p.Drag(25, top - 5);
    EXPECT_EQ(p.selection(), (std::vector<int>{2, 4})) << "the place of the press stays";
}

TEST(Ogle, TheViewMovesJustFarEnoughToShowTheCaret) {
    page p("abcdefghjk\nabc\nabc\nabc", 200);
    p.seen_dx = 30;
    p.seen_dy = 20;
    p.SetSelection(4, 4);
    p.keys({char_right});
    EXPECT_EQ(p.scroll[0], 0) << "at the edge it is in sight";
    p.keys({char_right});
    EXPECT_EQ(p.scroll[0], 6);
    p.SetSelection(0, 0);
    p.keys({char_down, char_down});
    EXPECT_EQ(p.scroll[0], 0);
    EXPECT_EQ(p.scroll[1], -10) << "the third line, with the second above it";
}

}  // namespace
