#include "app/progress_line.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>

#include "runtime/utf8.h"

void progress_line::open(std::FILE* out, bool in_place) {
    stream = out;
    on_terminal = in_place;
}

int progress_line::terminal_columns() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 20) return size.ws_col;
    return 80;
}

std::string progress_line::bar(double share, int width) {
    const auto filled = static_cast<std::size_t>(std::clamp(share, 0.0, 1.0) * width);
    return "[" + std::string(filled, '#') + std::string(static_cast<std::size_t>(width) - filled, '.') + "]";
}

std::string cut_middle(const std::string& text, int columns) {
    const auto characters = std::count_if(text.begin(), text.end(), [](char c) { return !is_utf8_tail(c); });
    if (characters <= columns) return text;
    const long keep = std::max(columns - 3, 0);
    const auto position = [&](long character) {
        std::size_t i = 0;
        for (; i < text.size(); ++i)
            if (!is_utf8_tail(text[i]) && character-- == 0) break;
        return i;
    };
    return text.substr(0, position(keep / 2)) + "..." + text.substr(position(characters - (keep - keep / 2)));
}

// The text whole, the item in what is left; where that would be too short to tell anything, the text alone.
static std::string fit(const std::string& text, const std::string& item, int columns) {
    constexpr int shortest_item = 8;
    const int left = columns - static_cast<int>(text.size()) - 1;
    if (item.empty() || left < shortest_item) return cut_middle(printable(text), columns);
    return printable(text) + " " + cut_middle(printable(item), left);
}

// A terminal's line is written over the last one and its rest is wiped; elsewhere each is a line of its own.
void progress_line::draw(double share, const std::string& text, const std::string& item) {
    const std::string percent = share < 0 ? "" : std::to_string(static_cast<int>(std::min(share, 1.0) * 100)) + "% ";
    if (on_terminal) {
        const std::string head = share < 0 ? "" : bar(share, 24) + " " + percent;
        const std::string tail = fit(text, item, terminal_columns() - static_cast<int>(head.size()) - 1);
        std::fprintf(stream, "\r%s%s\033[K", head.c_str(), tail.c_str());
        drawn = true;
    } else {
        std::fprintf(stream, "%s%s%s%s\n", percent.c_str(), printable(text).c_str(), item.empty() ? "" : " ",
                     printable(item).c_str());
    }
    std::fflush(stream);
}

void progress_line::show(double share, const std::string& text, const std::string& item, double now) {
    if (!stream) return;
    const double passed = last_time < 0 ? 5 : now - last_time;
    const bool due = on_terminal ? passed >= 0.1 : passed >= 5 || (passed >= 1 && share - last_share >= 0.05);
    if (!due) return;
    draw(share, text, item);
    last_time = now;
    last_share = share;
}

void progress_line::show_last(double share, const std::string& text) {
    if (!stream) return;
    draw(share, text, "");
    if (drawn) std::fputc('\n', stream);
    drawn = false;
    restart();
}

void progress_line::clear() {
    if (!drawn) return;
    std::fputs("\r\033[K", stream);
    std::fflush(stream);
    drawn = false;
}
