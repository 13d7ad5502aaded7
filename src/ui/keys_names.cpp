// The names of the virtual keys, and which key types a character.
#include <algorithm>
#include <iterator>
#include <string_view>

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
    {8, "QRNK_VK_BACKSPACE", "Backspace"}, {9, "QRNK_VK_TAB", "Tab"}, {12, "QRNK_VK_CLEAR", "Clear"},
    {13, "QRNK_VK_RETURN", "Return"}, {27, "QRNK_VK_ESCAPE", "Escape"}, {32, "QRNK_VK_SPACE", "Space"},
    {33, "QRNK_VK_PAGEUP", "PageUp"}, {34, "QRNK_VK_PAGEDOWN", "PageDown"}, {35, "QRNK_VK_END", "End"},
    {36, "QRNK_VK_HOME", "Home"}, {37, "QRNK_VK_LEFT", "Left"}, {38, "QRNK_VK_UP", "Up"},
    {39, "QRNK_VK_RIGHT", "Right"}, {40, "QRNK_VK_DOWN", "Down"}, {41, "QRNK_VK_SELECT", "Select"},
    {42, "QRNK_VK_PRINT", "Print"}, {43, "QRNK_VK_EXECUTE", "Execute"}, {44, "QRNK_VK_SNAPSHOT", "Snapshot"},
    {45, "QRNK_VK_INSERT", "Insert"}, {46, "QRNK_VK_DELETE", "Delete"}, {47, "QRNK_VK_HELP", "Help"},
    {48, "QRNK_VK_0", "0"}, {49, "QRNK_VK_1", "1"}, {50, "QRNK_VK_2", "2"}, {51, "QRNK_VK_3", "3"},
    {52, "QRNK_VK_4", "4"}, {53, "QRNK_VK_5", "5"}, {54, "QRNK_VK_6", "6"}, {55, "QRNK_VK_7", "7"},
    {56, "QRNK_VK_8", "8"}, {57, "QRNK_VK_9", "9"}, {65, "QRNK_VK_A", "A"}, {66, "QRNK_VK_B", "B"},
    {67, "QRNK_VK_C", "C"}, {68, "QRNK_VK_D", "D"}, {69, "QRNK_VK_E", "E"}, {70, "QRNK_VK_F", "F"},
    {71, "QRNK_VK_G", "G"}, {72, "QRNK_VK_H", "H"}, {73, "QRNK_VK_I", "I"}, {74, "QRNK_VK_J", "J"},
    {75, "QRNK_VK_K", "K"}, {76, "QRNK_VK_L", "L"}, {77, "QRNK_VK_M", "M"}, {78, "QRNK_VK_N", "N"},
    {79, "QRNK_VK_O", "O"}, {80, "QRNK_VK_P", "P"}, {81, "QRNK_VK_Q", "Q"}, {82, "QRNK_VK_R", "R"},
    {83, "QRNK_VK_S", "S"}, {84, "QRNK_VK_T", "T"}, {85, "QRNK_VK_U", "U"}, {86, "QRNK_VK_V", "V"},
    {87, "QRNK_VK_W", "W"}, {88, "QRNK_VK_X", "X"}, {89, "QRNK_VK_Y", "Y"}, {90, "QRNK_VK_Z", "Z"},
    {96, "QRNK_VK_NUMPAD_0", "Numpad-0"}, {97, "QRNK_VK_NUMPAD_1", "Numpad-1"}, {98, "QRNK_VK_NUMPAD_2", "Numpad-2"},
    {99, "QRNK_VK_NUMPAD_3", "Numpad-3"}, {100, "QRNK_VK_NUMPAD_4", "Numpad-4"}, {101, "QRNK_VK_NUMPAD_5", "Numpad-5"},
    {102, "QRNK_VK_NUMPAD_6", "Numpad-6"}, {103, "QRNK_VK_NUMPAD_7", "Numpad-7"}, {104, "QRNK_VK_NUMPAD_8", "Numpad-8"},
    {105, "QRNK_VK_NUMPAD_9", "Numpad-9"}, {106, "QRNK_VK_NUMPAD_MULTIPLY", "Numpad-*"},
    {107, "QRNK_VK_NUMPAD_ADD", "Numpad-+"}, {109, "QRNK_VK_NUMPAD_SUBTRACT", "Numpad--"},
    {110, "QRNK_VK_NUMPAD_DECIMAL", "Numpad-."}, {111, "QRNK_VK_NUMPAD_DIVIDE", "Numpad-/"}, {112, "QRNK_VK_F1", "F1"},
    {113, "QRNK_VK_F2", "F2"}, {114, "QRNK_VK_F3", "F3"}, {115, "QRNK_VK_F4", "F4"}, {116, "QRNK_VK_F5", "F5"},
    {117, "QRNK_VK_F6", "F6"}, {118, "QRNK_VK_F7", "F7"}, {119, "QRNK_VK_F8", "F8"}, {120, "QRNK_VK_F9", "F9"},
    {121, "QRNK_VK_F10", "F10"}, {122, "QRNK_VK_F11", "F11"}, {123, "QRNK_VK_F12", "F12"}, {124, "QRNK_VK_F13", "F13"},
    {125, "QRNK_VK_F14", "F14"}, {126, "QRNK_VK_F15", "F15"}, {127, "QRNK_VK_F16", "F16"}, {128, "QRNK_VK_F17", "F17"},
    {129, "QRNK_VK_F18", "F18"}, {130, "QRNK_VK_F19", "F19"}, {131, "QRNK_VK_F20", "F20"}, {132, "QRNK_VK_F21", "F21"},
    {133, "QRNK_VK_F22", "F22"}, {134, "QRNK_VK_F23", "F23"}, {135, "QRNK_VK_F24", "F24"}, {176, "QRNK_VK_EQUAL", "="},
    {177, "QRNK_VK_MINUS", "-"}, {178, "QRNK_VK_RIGHT_BRACKET", "]"}, {179, "QRNK_VK_LEFT_BRACKET", "["},
    {180, "QRNK_VK_QUOTE", "'"}, {181, "QRNK_VK_SEMICOLON", ";"}, {182, "QRNK_VK_BACKSLASH", "\\"},
    {183, "QRNK_VK_COMMA", ","}, {184, "QRNK_VK_SLASH", "/"}, {185, "QRNK_VK_PERIOD", "."},
    {186, "QRNK_VK_BACKQUOTE", "`"}, {187, "QRNK_VK_ENTER", "Enter"}, {188, "QRNK_VK_NUMPAD_ENTER", "Numpad-Enter"},
    {189, "QRNK_VK_NUMPAD_EQUAL", "Numpad-="},
};
// clang-format on
static_assert(std::size(kKeyNameTable) == 110);

struct ascii_key {
    int ascii, vkey, flags;
};

// What is no letter and no digit, on a US keyboard. 28 to 31 are the arrows.
// clang-format off
constexpr ascii_key kAsciiTranslations[] = {
    {8, 8, 0}, {9, 9, 0}, {13, 13, 0}, {27, 27, 0}, {28, 37, 0}, {29, 39, 0}, {30, 38, 0}, {31, 40, 0},
    {' ', ' ', 0}, {'!', '1', 1}, {'"', 180, 1}, {'#', '3', 1}, {'$', '4', 1}, {'%', '5', 1}, {'&', '7', 1},
    {'\'', 180, 0}, {'(', '9', 1}, {')', '0', 1}, {'*', '8', 1}, {'+', 176, 1}, {',', 183, 0}, {'-', 177, 0},
    {'.', 185, 0}, {'/', 184, 0}, {':', 181, 1}, {';', 181, 0}, {'<', 183, 1}, {'=', 176, 0}, {'>', 185, 1},
    {'?', 184, 1}, {'@', '2', 1}, {'[', 179, 0}, {'\\', 182, 0}, {']', 178, 0}, {'^', '6', 1}, {'_', 177, 1},
    {'`', 186, 0}, {'{', 179, 1}, {'|', 182, 1}, {'}', 178, 1}, {'~', 186, 1},
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
