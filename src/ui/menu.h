// menu.h: menus drawn in the window. The table's last slot is the pop-up list, which its owner fills anew in every
// frame while it is open. The result waits in select_popup_code until the owner collects it.
// Rectangles: left, bottom, right, top, in units of the logical window.
#pragma once

#include <string>
#include <vector>

struct item_struct {
    std::string text;  // beginning with "-": a separator; with "=": a line that cannot be chosen
    std::string key;
    int table_size = 0;  // text in charset 103
    short left = 0, bottom = 0, right = 0, top = 0;
};
struct menu_struct {
    std::string title;
    int owner = -1;  // window, -1 for any
    short left = 0, bottom = 0, right = 0, top = 0;
    std::vector<item_struct> items;
};
constexpr int menu_count = 1520, popup_menu = 1519;
extern std::vector<menu_struct> menu;
extern int popup_menu_select;                    // row chosen
extern int active_popup_code;                    // identity of the open list, 0 for none
extern int select_popup_code;                    // identity of the list whose choice waits
extern void (*menu_chosen)(int menu, int item);  // of another menu than the pop-up; may be null

void MACIBM_clear_menus(int mode);  // 1: an empty table of 1520
void MACIBM_clear_menu(int index);
void close_popup();   // no menu open, no list active, no choice waiting
int click_in_menu();  // a press while a menu is open: chooses or closes, and takes the press. 1 if there was one
void standard_gui();  // draws the open menu; once a frame
