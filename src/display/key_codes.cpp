#include "display/key_codes.h"

#include <algorithm>
#include <iterator>

namespace {

struct key_row {
    SDL_Keycode key;
    SDL_Scancode place;  // where a layout has something else on the key
    int vkey;
};

// What a layout moves around. Letters and digits count on from their first.
constexpr key_row printable_keys[] = {
    {SDLK_SPACE, SDL_SCANCODE_SPACE, 32},
    {SDLK_EQUALS, SDL_SCANCODE_EQUALS, 176},
    {SDLK_MINUS, SDL_SCANCODE_MINUS, 177},
    {SDLK_RIGHTBRACKET, SDL_SCANCODE_RIGHTBRACKET, 178},
    {SDLK_LEFTBRACKET, SDL_SCANCODE_LEFTBRACKET, 179},
    {SDLK_QUOTE, SDL_SCANCODE_APOSTROPHE, 180},
    {SDLK_SEMICOLON, SDL_SCANCODE_SEMICOLON, 181},
    {SDLK_BACKSLASH, SDL_SCANCODE_BACKSLASH, 182},
    {SDLK_COMMA, SDL_SCANCODE_COMMA, 183},
    {SDLK_SLASH, SDL_SCANCODE_SLASH, 184},
    {SDLK_PERIOD, SDL_SCANCODE_PERIOD, 185},
    {SDLK_BACKQUOTE, SDL_SCANCODE_GRAVE, 186},
};

struct fixed_key {
    SDL_Keycode key;
    int vkey;
    unsigned char character;
};

constexpr fixed_key editing_keys[] = {
    {SDLK_BACKSPACE, 8, 8},  {SDLK_TAB, 9, 9},     {SDLK_CLEAR, 12, 0},    {SDLK_RETURN, 13, 13},
    {SDLK_ESCAPE, 27, 27},   {SDLK_PAGEUP, 33, 0}, {SDLK_PAGEDOWN, 34, 0}, {SDLK_END, 35, 0},
    {SDLK_HOME, 36, 0},      {SDLK_LEFT, 37, 28},  {SDLK_UP, 38, 30},      {SDLK_RIGHT, 39, 29},
    {SDLK_DOWN, 40, 31},     {SDLK_SELECT, 41, 0}, {SDLK_EXECUTE, 43, 0},  {SDLK_PRINTSCREEN, 44, 0},
    {SDLK_INSERT, 45, 0},    {SDLK_DELETE, 46, 8}, {SDLK_HELP, 47, 0},     {SDLK_RETURN2, 187, 13},
    {SDLK_KP_ENTER, 188, 0},
};

constexpr fixed_key keypad_signs[] = {
    {SDLK_KP_MULTIPLY, 106, 0}, {SDLK_KP_PLUS, 107, 0},   {SDLK_KP_MINUS, 109, 0},
    {SDLK_KP_PERIOD, 110, 0},   {SDLK_KP_DIVIDE, 111, 0}, {SDLK_KP_EQUALS, 189, 0},
};

// What the keypad's 0 to 9 and "." do while Num Lock is off; 0: the 5, which does nothing.
constexpr SDL_Keycode keypad_moves[] = {SDLK_INSERT, SDLK_END,  SDLK_DOWN, SDLK_PAGEDOWN, SDLK_LEFT,  0,
                                        SDLK_RIGHT,  SDLK_HOME, SDLK_UP,   SDLK_PAGEUP,   SDLK_DELETE};

// The library counts the 0 behind the 9, on the keypad and by place.
int digit_behind(int first_is_one) {
    return (first_is_one + 1) % 10;
}

int vkey_of_printable(const SDL_Keysym& key) {
    if (key.sym >= SDLK_a && key.sym <= SDLK_z) return 'A' + (key.sym - SDLK_a);
    if (key.sym >= SDLK_0 && key.sym <= SDLK_9) return key.sym;
    for (const key_row& row : printable_keys)
        if (row.key == key.sym) return row.vkey;
    // Nothing that we have a name for, such as a Cyrillic letter or an umlaut: then the key counts by its place.
    if (key.scancode >= SDL_SCANCODE_A && key.scancode <= SDL_SCANCODE_Z) return 'A' + (key.scancode - SDL_SCANCODE_A);
    if (key.scancode >= SDL_SCANCODE_1 && key.scancode <= SDL_SCANCODE_0)
        return '0' + digit_behind(key.scancode - SDL_SCANCODE_1);
    for (const key_row& row : printable_keys)
        if (row.place == key.scancode) return row.vkey;
    return 0;
}

const fixed_key* find_key(const fixed_key* begin, const fixed_key* end, SDL_Keycode key) {
    const fixed_key* found = std::find_if(begin, end, [key](const fixed_key& row) { return row.key == key; });
    return found == end ? nullptr : found;
}

// The key that a keypad key stands for; itself with Num Lock.
SDL_Keycode without_num_lock(const SDL_Keysym& key) {
    if (key.mod & (KMOD_NUM | KMOD_SHIFT)) return key.sym;
    if (key.sym >= SDLK_KP_1 && key.sym <= SDLK_KP_0) return keypad_moves[digit_behind(key.sym - SDLK_KP_1)];
    return key.sym == SDLK_KP_PERIOD ? keypad_moves[10] : key.sym;
}

}  // namespace

display_key display_key_of(const SDL_Keysym& key) {
    const SDL_Keycode code = without_num_lock(key);
    if (const fixed_key* row = find_key(std::begin(editing_keys), std::end(editing_keys), code))
        return {row->vkey, row->character, false};
    if (const fixed_key* row = find_key(std::begin(keypad_signs), std::end(keypad_signs), code))
        return {row->vkey, 0, true};
    if (code >= SDLK_KP_1 && code <= SDLK_KP_0) return {96 + digit_behind(code - SDLK_KP_1), 0, true};
    if (code >= SDLK_F1 && code <= SDLK_F12) return {112 + (code - SDLK_F1), 0, false};
    if (code >= SDLK_F13 && code <= SDLK_F24) return {124 + (code - SDLK_F13), 0, false};
    const bool has_name = (code & SDLK_SCANCODE_MASK) != 0;  // a key that types nothing, such as Shift
    return {has_name ? 0 : vkey_of_printable(key), 0, !has_name};
}

unsigned char display_next_latin1(const char*& text) {
    const auto lead = static_cast<unsigned char>(*text++);
    if (lead < 0x80) return lead;
    const auto next = static_cast<unsigned char>(*text);
    while ((static_cast<unsigned char>(*text) & 0xC0) == 0x80)
        ++text;
    const bool fits = (lead == 0xC2 || lead == 0xC3) && (next & 0xC0) == 0x80;
    return fits ? static_cast<unsigned char>((lead & 3) << 6 | (next & 0x3F)) : static_cast<unsigned char>(0);
}
