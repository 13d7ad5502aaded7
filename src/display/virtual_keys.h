// virtual_keys.h: the program's own numbers of keys, the same on every system and layout, and the characters that keys
// without text of their own carry. Letters and digits have their ASCII codes.
#pragma once

enum : int {
    vk_back = 8,
    vk_tab = 9,
    vk_clear = 12,
    vk_return = 13,
    vk_escape = 27,
    vk_space = 32,
    vk_page_up = 33,
    vk_page_down = 34,
    vk_end = 35,
    vk_home = 36,
    vk_left = 37,
    vk_up = 38,
    vk_right = 39,
    vk_down = 40,
    vk_select = 41,
    vk_print = 42,
    vk_execute = 43,
    vk_snapshot = 44,
    vk_insert = 45,
    vk_delete = 46,
    vk_help = 47,
    vk_0 = 48,         // to 9: 57
    vk_a = 65,         // to Z: 90
    vk_numpad_0 = 96,  // to 9: 105
    vk_numpad_times = 106,
    vk_numpad_plus = 107,
    vk_numpad_minus = 109,
    vk_numpad_period = 110,
    vk_numpad_divide = 111,
    vk_f1 = 112,   // to F12: 123
    vk_f13 = 124,  // to F24: 135
    vk_f24 = 135,
    vk_equal = 176,
    vk_minus = 177,
    vk_right_bracket = 178,
    vk_left_bracket = 179,
    vk_quote = 180,
    vk_semicolon = 181,
    vk_backslash = 182,
    vk_comma = 183,
    vk_slash = 184,
    vk_period = 185,
    vk_backquote = 186,
    vk_enter = 187,  // a second Return, beside the keypad's
    vk_numpad_enter = 188,
    vk_numpad_equal = 189
};

// Both Delete keys carry `char_back`; the arrows have no place in ASCII.
enum : unsigned char {
    char_back = 8,
    char_tab = 9,
    char_return = 13,
    char_escape = 27,
    char_left = 28,
    char_right = 29,
    char_up = 30,
    char_down = 31
};
