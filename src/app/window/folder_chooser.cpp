#include "app/window/folder_chooser.h"

#include <optional>

#include "app/dest.h"
#include "app/window/folder_list.h"
#include "app/window/tones.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "gfx/colr.h"
#include "gfx/oglp.h"
#include "gfx/text.h"
#include "platform/folder_dialog.h"
#include "platform/folders.h"
#include "platform/paths.h"
#include "runtime/utf8.h"
#include "shell/pump.h"
#include "ui/butn.h"
#include "ui/field.h"
#include "ui/frames.h"
#include "ui/keys.h"

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

// What the field names, and what choosing it would do.
struct choice {
    std::string path;  // with its "/"
    bool exists = false, can_be_taken = false;
    std::string words;
};

choice judge(const std::string& path) {
    choice judged;
    judged.path = path;
    if (!judged.path.ends_with('/')) judged.path += '/';
    const std::string shown = fit_text(latin1_of_path(judged.path), 330, 1);
    if (path.empty() || path[0] != '/' || !is_usable_name(path)) {
        judged.words = "A whole path is wanted, from its first / on, without : and without \\.";
        return judged;
    }
    judged.exists = dir_exists(judged.path);
    const std::string above(folder_of(judged.path));
    judged.can_be_taken = judged.exists || (dir_exists(above) && folder_is_writable(above));
    if (judged.exists && folder_is_a_sim(judged.path))
        judged.words = "The copy of Velaris in this folder will be updated.";
    else if (judged.exists)
        judged.words = "Velaris will be installed in " + shown + "Velaris/";
    else if (judged.can_be_taken)
        judged.words = shown + " will be made, and Velaris installed in Velaris/ below it.";
    else
        judged.words = "There is no such folder, nor one in which it could be made.";
    return judged;
}

// The chooser's window: a list of folders, a field for a path, and what choosing would do.
class folder_browser {
  public:
    explicit folder_browser(const std::string& start) { go(start); }

    void draw(const std::string& message);
    std::optional<std::string> chosen;  // with its "/"
    bool cancelled = false;

  private:
    void go(const std::string& path) {
        if (list.open(path)) follow_list();
    }
    void follow_list() {
        typed = shown = latin1_of_path(list.folder());
        judged = judge(list.folder());
    }
    void make_typed();

    folder_list list;
    std::string typed,
        shown;      // the field, in Latin-1 as the keyboard gives it; and what it shows for the list's folder
    choice judged;  // of the field
    int hidden = 0;
};

void folder_browser::make_typed() {
    const int err = make_folder(judged.path);
    if (err == 0)
        go(judged.path);
    else
        judged.words = "It could not be made: " + error_str(err);
}

void folder_browser::draw(const std::string& message) {
    MACIBM_draw_backdrop();
    BTN_fillwin(1, 21);
    OGL_string(colour_text, 20, 418, message, mnw.wind_dx - 40, charset_text, align_left);
    if (list.draw()) follow_list();
    if (BTN_enterstring(60, 78, &typed, 4000, "-folder", 510, 1))
        judged = judge(typed == shown ? list.folder() : utf8_of_latin1(typed));
    const int colour = judged.can_be_taken ? colour_text : colour_of(tone_bad);
    OGL_string(colour, 60, 58, judged.words, 9999, charset_text, align_left);
    BTN_bool(30, 24, &hidden, "|-show hidden folders", 0);
    list.show_hidden(hidden != 0);

    // Return goes to a folder that was typed; where it is there already, it is chosen.
    if (return_hit && judged.exists && judged.path != list.folder()) {
        return_hit = 0;
        go(judged.path);
    }
    BTN_role(judged.can_be_taken && !judged.exists ? role_plain : role_off);
    if (BTN_action(262, 28, 100, 0, 1, "NEW FOLDER", "-")) make_typed();
    BTN_role(judged.can_be_taken ? role_primary : role_off);
    if (BTN_action(402, 28, 150, 0, 1, "CHOOSE THIS FOLDER", "-")) chosen = judged.path;
    cancelled = BTN_action(540, 28, 80, 0, 1, "CANCEL", "-") || escape_hit;
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
        browser.draw(message);
        if (browser.chosen || browser.cancelled) {
            MACIBM_startwind(wind_main, 0);
            if (!browser.chosen) return 0;
            chosen = *browser.chosen;
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
