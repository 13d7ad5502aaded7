// butn.h: push buttons, check boxes and radio buttons, in immediate mode: a call draws the widget, looks at the mouse
// of this frame and tells at once whether it was acted on. The caller's variables are the widgets' state.
//
// A label reads "left|right{?help": the part left of the widget, the part right of it, and the text that comes up when
// the mouse rests on it. Each may be missing.
// Units: canvas units relative to the logical window. While a menu is open nothing reacts.
#pragma once

#include <string>

#include "ui/shapes.h"

// What a button is for, and so how it looks. One at the most of a screen is primary: Return presses it where no widget
// takes the key.
enum button_role : int { role_plain, role_primary, role_danger, role_off };
void BTN_role(button_role role);  // of the next button alone; one that is off does not react

bool take_return();  // Return was pressed in this frame and nothing has used it; from now on it is used

// Centred on x, y; a width of 0 or below fits the label. `latched` shows it pressed; `feedback` 0: no pressed frame, 1:
// one, 2: a latched label glows. A text other than "-" stands right of it. 1 when it was pressed.
int BTN_action(float x, float y, float width, int latched, int feedback, const std::string& label,
               const std::string& text);
// 1 when it was flipped, by its box or its label.
int BTN_bool(float x, float y, int* value, const std::string& label, int radio);
// One radio button of a group that shares `value`. 1 when it was pressed, also when it was on already.
int BTN_is_int(float x, float y, int* value, int my_value, const std::string& label);
int BTN_xbol(float x, float y, bool* value, const std::string& label);
int BTN_xchr(float x, float y, char* value, const std::string& label);
int BTN_xbyt(float x, float y, unsigned char* value, const std::string& label);

void BTN_expand_label(const std::string& label, std::string* left, std::string* right, std::string* help);
enum : int { label_ends_at = 0, label_centred = 1, label_starts_at = 2 };
// Above 12 characters a label at either side breaks in two lines at the space, "-" or "/" nearest its middle; one that
// begins with "-" never does.
void BTN_util_draw_label(float x, float y, int side, const std::string& label, int glow);

// What widgets of every family do with their labels.
struct label_parts {
    std::string left, right, help;
};
label_parts expand_label(const std::string& label);
// Where a label is drawn.
box_place label_box(float x, float y, int side, const std::string& label);
void draw_side_labels(float left_x, float right_x, float y, const label_parts& label);  // ends there, starts there
// The help text of this frame, if the mouse stands in the rectangle and no menu lies over it.
void help_in(float left, float bottom, float right, float top, const std::string& help);

// Face, outline and ink of a button of a role, under the mouse or not; 0 as outline for none.
struct button_tones {
    unsigned face, line, ink;
};
button_tones tones_of(button_role role, bool hovered);

// The mouse stands in the rectangle, edges included. Never where widgets are asleep.
bool mouse_in(float left, float bottom, float right, float top);
// ... and was pressed there in this frame, with no menu in the way.
bool pressed_in(float left, float bottom, float right, float top);
