// key_codes.h: the window library's keys as the program's own: a virtual key, and the character of keys that type none.
// Private to the folder.
#pragma once

#include <SDL.h>

struct display_key {
    int vkey;                 // 0: none of ours
    unsigned char character;  // of the editing keys, which the library reports without text; else 0
    bool printable;           // text may follow
};
display_key display_key_of(const SDL_Keysym& key);
