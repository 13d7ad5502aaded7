// The names of the virtual keys, and which key types a character.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "display/virtual_keys.h"
#include "ui/focus.h"
#include "ui/keys.h"

namespace {

struct key_name {
    int vkey;
    const char* code;  // as a constant's name
    const char* name;  // as shown
};

// clang-format off
constexpr key_name kKeyNameTable[] = {
    {vk_back, "QRNK_VK_BACKSPACE", "Backspace"}, {vk_tab, "QRNK_VK_TAB", "Tab"}, {vk_clear, "QRNK_VK_CLEAR", "Clear"},
    {vk_return, "QRNK_VK_RETURN", "Return"}, {vk_escape, "QRNK_VK_ESCAPE", "Escape"},
    {vk_space, "QRNK_VK_SPACE", "Space"}, {vk_page_up, "QRNK_VK_PAGEUP", "PageUp"},
    {vk_page_down, "QRNK_VK_PAGEDOWN", "PageDown"}, {vk_end, "QRNK_VK_END", "End"}, {vk_home, "QRNK_VK_HOME", "Home"},
    {vk_left, "QRNK_VK_LEFT", "Left"}, {vk_up, "QRNK_VK_UP", "Up"}, {vk_right, "QRNK_VK_RIGHT", "Right"},
    {vk_down, "QRNK_VK_DOWN", "Down"}, {vk_select, "QRNK_VK_SELECT", "Select"}, {vk_print, "QRNK_VK_PRINT", "Print"},
    {vk_execute, "QRNK_VK_EXECUTE", "Execute"}, {vk_snapshot, "QRNK_VK_SNAPSHOT", "Snapshot"},
    {vk_insert, "QRNK_VK_INSERT", "Insert"}, {vk_delete, "QRNK_VK_DELETE", "Delete"}, {vk_help, "QRNK_VK_HELP", "Help"},
    {'0', "QRNK_VK_0", "0"}, {'1', "QRNK_VK_1", "1"}, {'2', "QRNK_VK_2", "2"}, {'3', "QRNK_VK_3", "3"},
    {'4', "QRNK_VK_4", "4"}, {'5', "QRNK_VK_5", "5"}, {'6', "QRNK_VK_6", "6"}, {'7', "QRNK_VK_7", "7"},
    {'8', "QRNK_VK_8", "8"}, {'9', "QRNK_VK_9", "9"}, {'A', "QRNK_VK_A", "A"}, {'B', "QRNK_VK_B", "B"},
    {'C', "QRNK_VK_C", "C"}, {'D', "QRNK_VK_D", "D"}, {'E', "QRNK_VK_E", "E"}, {'F', "QRNK_VK_F", "F"},
    {'G', "QRNK_VK_G", "G"}, {'H', "QRNK_VK_H", "H"}, {'I', "QRNK_VK_I", "I"}, {'J', "QRNK_VK_J", "J"},
    {'K', "QRNK_VK_K", "K"}, {'L', "QRNK_VK_L", "L"}, {'M', "QRNK_VK_M", "M"}, {'N', "QRNK_VK_N", "N"},
    {'O', "QRNK_VK_O", "O"}, {'P', "QRNK_VK_P", "P"}, {'Q', "QRNK_VK_Q", "Q"}, {'R', "QRNK_VK_R", "R"},
    {'S', "QRNK_VK_S", "S"}, {'T', "QRNK_VK_T", "T"}, {'U', "QRNK_VK_U", "U"}, {'V', "QRNK_VK_V", "V"},
    {'W', "QRNK_VK_W", "W"}, {'X', "QRNK_VK_X", "X"}, {'Y', "QRNK_VK_Y", "Y"}, {'Z', "QRNK_VK_Z", "Z"},
    {vk_numpad_0, "QRNK_VK_NUMPAD_0", "Numpad-0"}, {vk_numpad_0 + 1, "QRNK_VK_NUMPAD_1", "Numpad-1"},
    {vk_numpad_0 + 2, "QRNK_VK_NUMPAD_2", "Numpad-2"}, {vk_numpad_0 + 3, "QRNK_VK_NUMPAD_3", "Numpad-3"},
    {vk_numpad_0 + 4, "QRNK_VK_NUMPAD_4", "Numpad-4"}, {vk_numpad_0 + 5, "QRNK_VK_NUMPAD_5", "Numpad-5"},
    {vk_numpad_0 + 6, "QRNK_VK_NUMPAD_6", "Numpad-6"}, {vk_numpad_0 + 7, "QRNK_VK_NUMPAD_7", "Numpad-7"},
    {vk_numpad_0 + 8, "QRNK_VK_NUMPAD_8", "Numpad-8"}, {vk_numpad_0 + 9, "QRNK_VK_NUMPAD_9", "Numpad-9"},
    {vk_numpad_times, "QRNK_VK_NUMPAD_MULTIPLY", "Numpad-*"}, {vk_numpad_plus, "QRNK_VK_NUMPAD_ADD", "Numpad-+"},
    {vk_numpad_minus, "QRNK_VK_NUMPAD_SUBTRACT", "Numpad--"}, {vk_numpad_period, "QRNK_VK_NUMPAD_DECIMAL", "Numpad-."},
    {vk_numpad_divide, "QRNK_VK_NUMPAD_DIVIDE", "Numpad-/"}, {vk_f1, "QRNK_VK_F1", "F1"},
    {vk_f1 + 1, "QRNK_VK_F2", "F2"}, {vk_f1 + 2, "QRNK_VK_F3", "F3"}, {vk_f1 + 3, "QRNK_VK_F4", "F4"},
    {vk_f1 + 4, "QRNK_VK_F5", "F5"}, {vk_f1 + 5, "QRNK_VK_F6", "F6"}, {vk_f1 + 6, "QRNK_VK_F7", "F7"},
    {vk_f1 + 7, "QRNK_VK_F8", "F8"}, {vk_f1 + 8, "QRNK_VK_F9", "F9"}, {vk_f1 + 9, "QRNK_VK_F10", "F10"},
    {vk_f1 + 10, "QRNK_VK_F11", "F11"}, {vk_f1 + 11, "QRNK_VK_F12", "F12"}, {vk_f13, "QRNK_VK_F13", "F13"},
    {vk_f13 + 1, "QRNK_VK_F14", "F14"}, {vk_f13 + 2, "QRNK_VK_F15", "F15"}, {vk_f13 + 3, "QRNK_VK_F16", "F16"},
    {vk_f13 + 4, "QRNK_VK_F17", "F17"}, {vk_f13 + 5, "QRNK_VK_F18", "F18"}, {vk_f13 + 6, "QRNK_VK_F19", "F19"},
    {vk_f13 + 7, "QRNK_VK_F20", "F20"}, {vk_f13 + 8, "QRNK_VK_F21", "F21"}, {vk_f13 + 9, "QRNK_VK_F22", "F22"},
    {vk_f13 + 10, "QRNK_VK_F23", "F23"}, {vk_f13 + 11, "QRNK_VK_F24", "F24"}, {vk_equal, "QRNK_VK_EQUAL", "="},
    {vk_minus, "QRNK_VK_MINUS", "-"}, {vk_right_bracket, "QRNK_VK_RIGHT_BRACKET", "]"},
    {vk_left_bracket, "QRNK_VK_LEFT_BRACKET", "["}, {vk_quote, "QRNK_VK_QUOTE", "'"},
    {vk_semicolon, "QRNK_VK_SEMICOLON", ";"}, {vk_backslash, "QRNK_VK_BACKSLASH", "\\"},
    {vk_comma, "QRNK_VK_COMMA", ","}, {vk_slash, "QRNK_VK_SLASH", "/"}, {vk_period, "QRNK_VK_PERIOD", "."},
    {vk_backquote, "QRNK_VK_BACKQUOTE", "`"}, {vk_enter, "QRNK_VK_ENTER", "Enter"},
    {vk_numpad_enter, "QRNK_VK_NUMPAD_ENTER", "Numpad-Enter"}, {vk_numpad_equal, "QRNK_VK_NUMPAD_EQUAL", "Numpad-="},
};
// clang-format on
static_assert(std::size(kKeyNameTable) == 110);

struct ascii_key {
    int ascii, vkey, flags;
};

// What is no letter and no digit, on a US keyboard.
// clang-format off
constexpr ascii_key kAsciiTranslations[] = {
    {char_back, vk_back, 0}, {char_tab, vk_tab, 0}, {char_return, vk_return, 0}, {char_escape, vk_escape, 0},
    {char_left, vk_left, 0}, {char_right, vk_right, 0}, {char_up, vk_up, 0}, {char_down, vk_down, 0},
    {' ', vk_space, 0}, {'!', '1', key_shift}, {'"', vk_quote, key_shift}, {'#', '3', key_shift}, {'$', '4', key_shift},
    {'%', '5', key_shift}, {'&', '7', key_shift}, {'\'', vk_quote, 0}, {'(', '9', key_shift}, {')', '0', key_shift},
    {'*', '8', key_shift}, {'+', vk_equal, key_shift}, {',', vk_comma, 0}, {'-', vk_minus, 0}, {'.', vk_period, 0},
    {'/', vk_slash, 0}, {':', vk_semicolon, key_shift}, {';', vk_semicolon, 0}, {'<', vk_comma, key_shift},
    {'=', vk_equal, 0}, {'>', vk_period, key_shift}, {'?', vk_slash, key_shift}, {'@', '2', key_shift},
    {'[', vk_left_bracket, 0}, {'\\', vk_backslash, 0}, {']', vk_right_bracket, 0}, {'^', '6', key_shift},
    {'_', vk_minus, key_shift}, {'`', vk_backquote, 0}, {'{', vk_left_bracket, key_shift},
    {'|', vk_backslash, key_shift}, {'}', vk_right_bracket, key_shift}, {'~', vk_backquote, key_shift},
};
// clang-format on

const struct {
    int flag;
    const char *name, *code;
} flag_names[] = {
    {key_shift, "SHIFT", "QRNK_SHIFT"},
    {key_alt, "ALT", "QRNK_ALT"},
    {key_control, "CTRL", "QRNK_CTRL"},
};

const key_name* find_name(int vkey) {
    const auto found = std::find_if(std::begin(kKeyNameTable), std::end(kKeyNameTable),
                                    [vkey](const key_name& row) { return row.vkey == vkey; });
    return found == std::end(kKeyNameTable) ? nullptr : found;
}

char upper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool same_letters(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return upper(x) == upper(y); });
}

void append(std::string& list, const char* separator, const char* item) {
    if (!list.empty()) list += separator;
    list += item;
}

}  // namespace

void keys_class::ascii_to_vkey(int ascii, int& vkey, int& flags) {
    vkey = flags = 0;
    if (ascii >= 'a' && ascii <= 'z') vkey = ascii - 'a' + 'A';
    if ((ascii >= 'A' && ascii <= 'Z') || (ascii >= '0' && ascii <= '9')) vkey = ascii;
    if (ascii >= 'A' && ascii <= 'Z') flags = key_shift;
    for (const ascii_key& row : kAsciiTranslations)
        if (row.ascii == ascii) {
            vkey = row.vkey;
            flags = row.flags;
        }
}

int keys_class::str_to_vkey(const std::string& name) {
    for (const key_name& row : kKeyNameTable)
        if (same_letters(row.name, name)) return row.vkey;
    return 0;
}

std::string keys_class::vkey_to_str(int vkey) {
    const key_name* row = find_name(vkey);
    return row ? row->name : "<none>";
}

std::string keys_class::vkey_to_code(int vkey) {
    const key_name* row = find_name(vkey);
    return row ? row->code : std::to_string(vkey);
}

int keys_class::str_to_flag(const std::string& text) {
    int flags = 0;
    for (const auto& row : flag_names)
        if (text.find(row.name) != std::string::npos) flags |= row.flag;
    return flags;
}

std::string keys_class::flag_to_str(int flags) {
    std::string text;
    for (const auto& row : flag_names)
        if (flags & row.flag) append(text, "+", row.name);
    return text;
}

std::string keys_class::flag_to_code(int flags) {
    std::string text;
    for (const auto& row : flag_names)
        if (flags & row.flag) append(text, " | ", row.code);
    return text.empty() ? "0" : text;
}
