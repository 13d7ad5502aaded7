// colr.h: the table of numbered colours; all drawing takes an index into it.
// Indices below 46 take the global tint; 34 to 47 come from the atlas at start-up, 78 to 83 pulse, 102 is a sprite's.
#pragma once

constexpr int colour_count = 111;

// The slots that something on the screen is drawn in, by what it is.
enum : int {
    colour_white = 0,  // widgets as the atlas has them, but for the tint
    colour_bad_news = 1,
    colour_selection = 8,           // behind chosen text; the digit that keys go to
    colour_black = 12,              // a shade over what is dimmed
    colour_no_fill = colour_black,  // of a slider: it draws none
    colour_good_news = 13,
    colour_back = 34,       // behind every window
    colour_groove = 35,     // of a menu's separators, the shaded line
    colour_highlight = 36,  // under the row that the mouse is on, at 0.25
    colour_ridge = 37,      // of a menu's separators, the other line
    colour_menu = 38,       // rows of menus and lists
    colour_title = 40,      // of a window's frame
    colour_tab_chosen = 41,
    colour_tab = 42,
    colour_label = 43,    // and titles of panels
    colour_field = 45,    // text in fields; what stands beside a button
    colour_text = 46,     // sentences of the screens
    colour_help = 47,     // and a grabbed slider
    colour_picture = 49,  // white that ignores the tint
    colour_note = 61,
    colour_error = 69,
    colour_latched = 80,  // pulses: label of a button that is on
    colour_sprite = 102,  // as the sprite in hand is tinted
};
constexpr int colour_first_untinted = colour_text;

class colr_class {
  public:
    colr_class();  // the fixed colours; all others black
    void assign(int index, float r, float g, float b);
    const float* rgb(int index) const { return table[index]; }
    void set_lit_col(int col_type);  // the tint: 0 by day, 1 in a dim light, 2 in a red one; any other is fatal
    void set_lites_for_interface();  // holds each tint to at least 0.75
    void pulse(double seconds);      // 78 to 83 and `blink`, once a frame

    float tint[3] = {1, 1, 1};
    float blink = 1;           // 0.4 to 1
    unsigned char gamma[256];  // the identity

  private:
    float table[colour_count][3];
};
extern colr_class colr;
