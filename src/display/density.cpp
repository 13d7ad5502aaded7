#include "display/density.h"

#include <SDL.h>
#include <dlfcn.h>

#include <cstdlib>
#include <cstring>
#include <initializer_list>

namespace {

// What a monitor says of its size is at times nonsense: a television of 16 by 9 mm.
bool is_bearable(float dots_an_inch) {
    return dots_an_inch >= 48 && dots_an_inch <= 800;
}

float number_of(const char* text) {
    return text ? std::strtof(text, nullptr) : 0.0f;
}

// The X server's resource Xft.dpi, which desktops set for their programs. The library is there where SDL draws through
// it, and is asked by name, so that nothing here needs it.
float dots_of_x_resources() {
    void* const library = dlopen("libX11.so.6", RTLD_LAZY);
    if (!library) return 0;
    const auto open = reinterpret_cast<void* (*)(const char*)>(dlsym(library, "XOpenDisplay"));
    const auto resources = reinterpret_cast<char* (*)(void*)>(dlsym(library, "XResourceManagerString"));
    const auto close = reinterpret_cast<int (*)(void*)>(dlsym(library, "XCloseDisplay"));
    float dots = 0;
    if (void* const server = open && resources && close ? open(nullptr) : nullptr) {
        const char* text = resources(server);
        const char* found = text ? std::strstr(text, "Xft.dpi:") : nullptr;
        if (found) dots = number_of(found + std::strlen("Xft.dpi:"));
        close(server);
    }
    dlclose(library);
    return dots;
}

}  // namespace

float display_density(int index) {
    float dots = 0;
    if (SDL_GetDisplayDPI(index, &dots, nullptr, nullptr) == 0 && is_bearable(dots)) return dots / 96;
    const char* driver = SDL_GetCurrentVideoDriver();
    if (driver && std::strcmp(driver, "x11") == 0) dots = dots_of_x_resources();
    if (is_bearable(dots)) return dots / 96;
    for (const char* variable : {"GDK_SCALE", "QT_SCALE_FACTOR"}) {
        const float scale = number_of(std::getenv(variable));
        if (is_bearable(scale * 96)) return scale;
    }
    return 1;
}
