#include <SDL.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "display/density.h"
#include "display/display.h"
#include "display/points.h"

// The window as asked for. It is made anew where a context wants other samples, as they belong to the window's visual;
// so `window` may be null while `asked` is set.
static struct {
    bool asked;
    bool full_screen;
    int dx, dy;
    int samples;  // of `window`
    SDL_Window* window;
    SDL_GLContext context;
    std::string title;
} shown;

// Pixels of the drawing surface for one of the desktop's units, in which it counts windows and the mouse.
static float pixels_of_a_point() {
    int points = 0, pixels = 0;
    if (shown.window) SDL_GetWindowSize(shown.window, &points, nullptr);
    if (shown.window) SDL_GL_GetDrawableSize(shown.window, &pixels, nullptr);
    return points > 0 && pixels > 0 ? static_cast<float>(pixels) / static_cast<float>(points) : 1.0f;
}

void display_to_surface(int& x, int& y) {
    const float scale = pixels_of_a_point();
    x = static_cast<int>(std::lround(static_cast<float>(x) * scale));
    y = static_cast<int>(std::lround(static_cast<float>(y) * scale));
}

// In points: the part of the window's display that the inside of a window may cover.
static SDL_Rect room_inside() {
    const int display = shown.window ? std::max(0, SDL_GetWindowDisplayIndex(shown.window)) : 0;
    SDL_Rect room = {0, 0, 0, 0};
    if (SDL_GetDisplayUsableBounds(display, &room) != 0) SDL_GetDisplayBounds(display, &room);
    int top = 0, left = 0, bottom = 0, right = 0;
    if (!shown.full_screen && shown.window) SDL_GetWindowBordersSize(shown.window, &top, &left, &bottom, &right);
    return {room.x + left, room.y + top, room.w - left - right, room.h - top - bottom};
}

display_room display_get_room() {
    const SDL_Rect room = room_inside();
    const float scale = pixels_of_a_point();
    const auto pixels = [scale](int points) { return static_cast<int>(static_cast<float>(points) * scale); };
    const int display = shown.window ? std::max(0, SDL_GetWindowDisplayIndex(shown.window)) : 0;
    return {pixels(room.w), pixels(room.h), display_density(display)};
}

// Start-up, from the video system to a window with a context: each step may fail, and display_error() tells why.
bool display_start() {
    // The desktop's effects may stay on beside a window that is no game, and its screen saver may come.
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
    if (SDL_Init(SDL_INIT_VIDEO) != 0) return false;
    // Without a display the library falls back on a driver that draws where nobody sees it, for ever. Only who asks for
    // such a driver gets it.
    const std::string driver = SDL_GetCurrentVideoDriver();
    if ((driver == "offscreen" || driver == "dummy") && !std::getenv("SDL_VIDEODRIVER")) {
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        SDL_SetError("There is no display");
        return false;
    }
    SDL_StartTextInput();
    return true;
}

bool display_get_mode(display_mode& mode) {
    SDL_DisplayMode main;
    if (SDL_GetDesktopDisplayMode(0, &main) != 0) return false;
    mode = {main.w, main.h, static_cast<int>(SDL_BYTESPERPIXEL(main.format)) * 8};
    return true;
}

std::string display_error() {
    return SDL_GetError();
}

static void destroy_window() {
    if (shown.context) SDL_GL_DeleteContext(shown.context);
    if (shown.window) SDL_DestroyWindow(shown.window);
    shown.context = nullptr;
    shown.window = nullptr;
}

static void ask_for_format(int colour_bits, int depth_bits, int samples) {
    SDL_GL_ResetAttributes();
    SDL_GL_SetAttribute(SDL_GL_DOUBLEBUFFER, 1);
    SDL_GL_SetAttribute(SDL_GL_RED_SIZE, colour_bits);
    SDL_GL_SetAttribute(SDL_GL_GREEN_SIZE, colour_bits);
    SDL_GL_SetAttribute(SDL_GL_BLUE_SIZE, colour_bits);
    SDL_GL_SetAttribute(SDL_GL_DEPTH_SIZE, depth_bits);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLEBUFFERS, samples > 0);
    SDL_GL_SetAttribute(SDL_GL_MULTISAMPLESAMPLES, samples);
    SDL_GL_SetAttribute(SDL_GL_CONTEXT_PROFILE_MASK, SDL_GL_CONTEXT_PROFILE_COMPATIBILITY);
}

// Hidden until its context is there, so that a window that has to be made twice does not flash.
static bool create_window(int samples) {
    static constexpr int wishes[][2] = {{8, 24}, {8, 16}, {0, 0}};  // bits of a colour and of depth, best first
    destroy_window();
    const SDL_Rect room = room_inside();
    const int x = shown.full_screen ? 0 : room.x + std::max(0, (room.w - shown.dx) / 2);
    const int y = shown.full_screen ? 0 : room.y + std::max(0, (room.h - shown.dy) / 2);
    const Uint32 border = shown.full_screen ? SDL_WINDOW_BORDERLESS : 0;
    for (const auto& wish : wishes) {
        ask_for_format(wish[0], wish[1], samples);
        shown.window = SDL_CreateWindow(shown.title.c_str(), x, y, shown.dx, shown.dy,
                                        SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN | SDL_WINDOW_ALLOW_HIGHDPI | border);
        if (shown.window) break;
    }
    shown.samples = samples;
    return shown.window != nullptr;
}

bool display_open_window(const std::string& title, int dx, int dy, bool full_screen) {
    shown.title = title;
    shown.full_screen = full_screen;
    shown.dx = dx;
    shown.dy = dy;
    shown.asked = create_window(0);
    return shown.asked;
}

void display_resize_window(int dx, int dy) {
    shown.dx = dx;
    shown.dy = dy;
    if (!shown.window) return;
    const float scale = pixels_of_a_point();
    const auto points = [scale](int pixels) {
        return static_cast<int>(std::lround(static_cast<float>(pixels) / scale));
    };
    const SDL_Rect room = room_inside();
    SDL_Rect now{}, wanted = {0, 0, points(dx), points(dy)};
    SDL_GetWindowPosition(shown.window, &now.x, &now.y);
    SDL_GetWindowSize(shown.window, &now.w, &now.h);
    const bool inside = now.x >= room.x && now.y >= room.y && now.x + wanted.w <= room.x + room.w &&
                        now.y + wanted.h <= room.y + room.h;
    if (now.w != wanted.w || now.h != wanted.h) SDL_SetWindowSize(shown.window, wanted.w, wanted.h);
    if (!inside)
        SDL_SetWindowPosition(shown.window, room.x + std::max(0, (room.w - wanted.w) / 2),
                              room.y + std::max(0, (room.h - wanted.h) / 2));
}

bool display_is_hidden() {
    return shown.window && (SDL_GetWindowFlags(shown.window) & (SDL_WINDOW_HIDDEN | SDL_WINDOW_MINIMIZED)) != 0;
}

void display_get_surface(int& dx, int& dy) {
    if (shown.window) SDL_GL_GetDrawableSize(shown.window, &dx, &dy);
}

void display_close_window() {
    destroy_window();
    shown.asked = false;
}

bool display_window_is_open() {
    return shown.asked;
}

static int attribute(SDL_GLattr which) {
    int value = 0;
    SDL_GL_GetAttribute(which, &value);
    return value;
}

bool display_make_context(int samples, context_facts& facts) {
    if (!shown.asked) {
        SDL_SetError("There is no window.");
        return false;
    }
    // The old context goes first: some drivers have room for one.
    if (shown.context) SDL_GL_DeleteContext(shown.context);
    shown.context = nullptr;
    if ((!shown.window || shown.samples != samples) && !create_window(samples)) return false;
    shown.context = SDL_GL_CreateContext(shown.window);
    if (!shown.context || SDL_GL_MakeCurrent(shown.window, shown.context) != 0) return false;
    // The pump keeps the pace; a swap that waited for the screen would keep it twice.
    SDL_GL_SetSwapInterval(0);
    SDL_ShowWindow(shown.window);
    SDL_PumpEvents();  // what the desktop says of the window, its decorations above all
    facts = {true,
             attribute(SDL_GL_DOUBLEBUFFER) != 0,
             attribute(SDL_GL_RED_SIZE),
             attribute(SDL_GL_GREEN_SIZE),
             attribute(SDL_GL_BLUE_SIZE),
             attribute(SDL_GL_ALPHA_SIZE),
             attribute(SDL_GL_DEPTH_SIZE),
             attribute(SDL_GL_MULTISAMPLESAMPLES),
             -1};
    return true;
}

void display_set_icon(const unsigned char* pixels, int dx, int dy) {
    std::vector<unsigned char> copy(pixels, pixels + std::ptrdiff_t{dx} * dy * 4);  // the library wants to write to it
    SDL_Surface* icon = SDL_CreateRGBSurfaceWithFormatFrom(copy.data(), dx, dy, 32, dx * 4, SDL_PIXELFORMAT_RGBA32);
    if (icon && shown.window) SDL_SetWindowIcon(shown.window, icon);
    SDL_FreeSurface(icon);
}

void display_keep_awake(bool awake) {
    if (awake)
        SDL_DisableScreenSaver();
    else
        SDL_EnableScreenSaver();
}

void display_swap() {
    if (shown.context) SDL_GL_SwapWindow(shown.window);
}

void* display_proc_address(const char* name) {
    return SDL_GL_GetProcAddress(name);
}

void display_get_mouse(int& x, int& y) {
    SDL_GetMouseState(&x, &y);
    display_to_surface(x, y);
}

void display_show_cursor(bool show) {
    SDL_ShowCursor(show ? SDL_ENABLE : SDL_DISABLE);
}

static bool is_set(const char* variable) {
    const char* value = std::getenv(variable);
    return value && *value;
}

bool display_message_box(const std::string& main_text, const std::string& secondary_text) {
    // Asked with no display at all, or told not to show anything, the library would still look for a way of its own.
    const char* driver = std::getenv("SDL_VIDEODRIVER");
    if (driver && (std::strcmp(driver, "dummy") == 0 || std::strcmp(driver, "offscreen") == 0)) return false;
    if (!is_set("DISPLAY") && !is_set("WAYLAND_DISPLAY")) return false;
    const std::string text = main_text + "\n\n" + secondary_text;
    const char* title = shown.title.empty() ? "Velaris Installer" : shown.title.c_str();
    return SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, title, text.c_str(), shown.window) == 0;
}
