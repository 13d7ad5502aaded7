#include <SDL.h>

#include <memory>

#include "display/display.h"

std::string display_clipboard() {
    const std::unique_ptr<char, void (*)(void*)> text(SDL_GetClipboardText(), SDL_free);
    return text ? text.get() : "";
}

void display_set_clipboard(const std::string& text) {
    SDL_SetClipboardText(text.c_str());
}
