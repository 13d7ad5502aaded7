// window_ids.h: the numbers of the logical windows. There is one window of the desktop; a number says which screen is
// open in it. They stand down here because the clock reads them as well as the pump and the widgets.
#pragma once

enum : int {
    wind_none = -1,  // before the first one
    wind_main = 0,
    wind_agreement = 1,
    wind_prefs = 2,
    wind_folder = 3,       // the program's own folder chooser
    wind_folder_wait = 4,  // the desktop's folder dialog is open
    // Special ones: no corner and no Return closes them. Those without a use here keep their size and their rules.
    wind_livery = 993,
    wind_message = 994,
    wind_alert = 995,
    wind_notice = 996,
    wind_changed_file = 997,
    wind_tall = 998,
    wind_keys = 999  // keys run no commands there
};

inline bool wind_is_special(int number) {
    return number >= wind_livery && number <= wind_keys;
}

// Alerts and questions: no corner boxes, and time spent there counts for no frame.
inline bool wind_is_question(int number) {
    return number >= wind_alert && number <= wind_keys;
}
