#include "app/window/folder_chooser.h"

#include <algorithm>
#include <vector>

#include "app/window/tones.h"
#include "files/io_utils.h"
#include "files/opensave.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "platform/folder_dialog.h"
#include "platform/paths.h"
#include "runtime/utf8.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/field.h"
#include "ui/frames.h"
#include "ui/keys.h"
#include "ui/slider.h"

namespace {

// What the window shows while the desktop's dialog is open. A press into its corner closes the dialog too.
bool keep_dialog_open() {
    if (mnw.wind_id != wind_folder_wait) return false;
    MACIBM_draw_backdrop();
    BTN_fillwin(1, 21);
    OGL_string(colour_text, mnw.wind_dx / 2, 50, "Please choose the folder in the other window.", mnw.wind_dx - 40,
               charset_text, align_centre);
    MACIBM_event_proc();
    return mnw.wind_id == wind_folder_wait;
}

// Bytes that no path of the program may hold.
bool is_usable(const std::string& name) {
    return name.find_first_of(":\\\r\n") == std::string::npos;
}

// The chooser's list and field. `folder` is whole and ends in "/".
class folder_browser {
  public:
    explicit folder_browser(const std::string& start) { open(start); }

    // Goes to a folder, or says why not.
    bool open(std::string path) {
        if (path.empty() || path.back() != '/') path += '/';
        if (path[0] != '/' || !is_usable(path) || !dir_exists(path)) {
            problem = "There is no such folder, or it may not be opened.";
            return false;
        }
        folder = path;
        typed = shown = latin1_of_path(path);
        problem.clear();
        first_row = 0;
        list_folders();
        return true;
    }

    // The field holds Latin-1, as the keyboard gives it; names on the disk are UTF-8.
    bool open_typed() { return typed == shown || open(utf8_of_latin1(typed)); }

    void draw_rows();
    void draw_field() { BTN_enterstring(60, 78, &typed, 4000, "-folder", 510, 1); }
    void draw_problem() const { OGL_string(colour_of(tone_bad), 60, 58, problem, 9999, charset_text, align_left); }

    std::string folder;

  private:
    void list_folders() {
        std::vector<std::string> found;
        std::vector<int> kinds;
        opensave_getitems(folder, kind_any, found, kinds);
        names.clear();
        for (std::size_t i = 0; i < found.size(); ++i)
            if (kinds[i] == kind_folder && is_usable(found[i])) names.push_back(found[i]);
        std::sort(names.begin(), names.end());
        if (folder != "/") names.insert(names.begin(), "..");
    }

    void enter(const std::string& name) { open(name == ".." ? std::string(folder_of(folder)) : folder + name + "/"); }

    std::vector<std::string> names;
    std::string typed, shown, problem;
    int first_row = 0;
    int wheel_seen = mnw.wheel_delta;
};

void folder_browser::draw_rows() {
    constexpr int rows = 17;
    constexpr float row_height = 16, left = 20, right = 560, top = 385;
    constexpr float bottom = top - rows * row_height;
    BTN_frame2(box_thin, left, bottom, right - left, top - bottom, "");
    const int last = std::max(static_cast<int>(names.size()) - rows, 0);
    first_row = std::clamp(first_row - 3 * (mnw.wheel_delta - wheel_seen), 0, last);
    wheel_seen = mnw.wheel_delta;
    BTN_vert_slider(0, right + 18, bottom + 14, top - 14, 0, last, &first_row);
    const int end = std::min(first_row + rows, static_cast<int>(names.size()));
    for (int i = first_row; i < end; ++i) {
        const std::string& name = names[static_cast<std::size_t>(i)];
        const float row_top = top - static_cast<float>(i - first_row) * row_height, row_bottom = row_top - row_height;
        if (mouse_in(left, row_bottom + 1, right, row_top))
            OGL_fillrect(colour_highlight, 0.25f, left + 2, row_bottom, right - left - 4, row_height);
        const std::string words = name == ".." ? "one folder up" : latin1_of_path(name);
        OGL_string(colour_field, left + 12, row_bottom + 5, fit_text(words, right - left - 24, 1), 9999, charset_text,
                   align_left);
        if (pressed_in(left, row_bottom + 1, right, row_top)) {
            enter(name);
            return;  // the list is another one now
        }
    }
}

// The folder itself, or the nearest one above it that is there.
std::string nearest_folder(std::string path) {
    while (!path.empty() && !dir_exists(path))
        path.resize(folder_length(path));
    return path.empty() ? "/" : path;
}

int browse(const std::string& message, const std::string& start, std::string& chosen) {
    stls.title = "Choose a folder";
    MACIBM_startwind(wind_folder, 0);
    folder_browser browser(nearest_folder(start));
    while (mnw.wind_id == wind_folder) {
        MACIBM_draw_backdrop();
        BTN_fillwin(1, 21);
        OGL_string(colour_text, 20, 418, message, mnw.wind_dx - 40, charset_text, align_left);
        browser.draw_rows();
        browser.draw_field();
        browser.draw_problem();
        if (return_hit) browser.open_typed();
        const bool take = BTN_action(410, 28, 150, 0, 1, "CHOOSE THIS FOLDER", "-") && browser.open_typed();
        if (take || BTN_action(540, 28, 80, 0, 1, "CANCEL", "-") || escape_hit) {
            MACIBM_startwind(wind_main, 0);
            if (!take) return 0;
            chosen = browser.folder;
            while (chosen.size() > 1 && chosen.back() == '/')
                chosen.pop_back();
            return 1;
        }
        MACIBM_event_proc();
    }
    return 0;
}

}  // namespace

int choose_folder_in_window(const std::string& message, const std::string&, const std::string& start,
                            std::string& chosen) {
    if (!folder_dialog_available()) return browse(message, start, chosen);
    stls.title = "Choose a folder";
    MACIBM_startwind(wind_folder_wait, 0);
    const folder_dialog_result result = run_folder_dialog(message, start, chosen, keep_dialog_open);
    if (mnw.wind_id == wind_folder_wait) MACIBM_startwind(wind_main, 0);
    return result == folder_dialog_result::chosen;
}
