#include "display/key_codes.h"

#include <algorithm>
#include <iterator>

#include "display/virtual_keys.h"

namespace {

struct key_row {
    SDL_Keycode key;
    SDL_Scancode place;  // where a layout has something else on the key
    int vkey;
};

// What a layout moves around. Letters and digits count on from their first.
constexpr key_row printable_keys[] = {
    {SDLK_SPACE, SDL_SCANCODE_SPACE, vk_space},
    {SDLK_EQUALS, SDL_SCANCODE_EQUALS, vk_equal},
    {SDLK_MINUS, SDL_SCANCODE_MINUS, vk_minus},
    {SDLK_RIGHTBRACKET, SDL_SCANCODE_RIGHTBRACKET, vk_right_bracket},
    {SDLK_LEFTBRACKET, SDL_SCANCODE_LEFTBRACKET, vk_left_bracket},
    {SDLK_QUOTE, SDL_SCANCODE_APOSTROPHE, vk_quote},
    {SDLK_SEMICOLON, SDL_SCANCODE_SEMICOLON, vk_semicolon},
    {SDLK_BACKSLASH, SDL_SCANCODE_BACKSLASH, vk_backslash},
    {SDLK_COMMA, SDL_SCANCODE_COMMA, vk_comma},
    {SDLK_SLASH, SDL_SCANCODE_SLASH, vk_slash},
    {SDLK_PERIOD, SDL_SCANCODE_PERIOD, vk_period},
    {SDLK_BACKQUOTE, SDL_SCANCODE_GRAVE, vk_backquote},
};

struct fixed_key {
    SDL_Keycode key;
    int vkey;
    unsigned char character;
};

constexpr fixed_key editing_keys[] = {
    {SDLK_BACKSPACE, vk_back, char_back},
    {SDLK_TAB, vk_tab, char_tab},
    {SDLK_CLEAR, vk_clear, 0},
    {SDLK_RETURN, vk_return, char_return},
    {SDLK_ESCAPE, vk_escape, char_escape},
    {SDLK_PAGEUP, vk_page_up, 0},
    {SDLK_PAGEDOWN, vk_page_down, 0},
    {SDLK_END, vk_end, 0},
    {SDLK_HOME, vk_home, 0},
    {SDLK_LEFT, vk_left, char_left},
    {SDLK_UP, vk_up, char_up},
    {SDLK_RIGHT, vk_right, char_right},
    {SDLK_DOWN, vk_down, char_down},
    {SDLK_SELECT, vk_select, 0},
    {SDLK_EXECUTE, vk_execute, 0},
    {SDLK_PRINTSCREEN, vk_snapshot, 0},
    {SDLK_INSERT, vk_insert, 0},
    {SDLK_DELETE, vk_delete, char_back},
    {SDLK_HELP, vk_help, 0},
    {SDLK_RETURN2, vk_enter, char_return},
    {SDLK_KP_ENTER, vk_numpad_enter, 0},
};

constexpr fixed_key keypad_signs[] = {
    {SDLK_KP_MULTIPLY, vk_numpad_times, 0}, {SDLK_KP_PLUS, vk_numpad_plus, 0},     {SDLK_KP_MINUS, vk_numpad_minus, 0},
    {SDLK_KP_PERIOD, vk_numpad_period, 0},  {SDLK_KP_DIVIDE, vk_numpad_divide, 0}, {SDLK_KP_EQUALS, vk_numpad_equal, 0},
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
    if (code >= SDLK_KP_1 && code <= SDLK_KP_0) return {vk_numpad_0 + digit_behind(code - SDLK_KP_1), 0, true};
    if (code >= SDLK_F1 && code <= SDLK_F12) return {vk_f1 + (code - SDLK_F1), 0, false};
    if (code >= SDLK_F13 && code <= SDLK_F24) return {vk_f13 + (code - SDLK_F13), 0, false};
    const bool has_name = (code & SDLK_SCANCODE_MASK) != 0;  // a key that types nothing, such as Shift
    return {has_name ? 0 : vkey_of_printable(key), 0, !has_name};
}
