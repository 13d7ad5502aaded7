#include <SDL.h>

#include <cstdlib>
#include <cstring>

#include "display/display.h"

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
    const int x = shown.full_screen ? 0 : SDL_WINDOWPOS_CENTERED, y = shown.full_screen ? 0 : 40;
    const Uint32 border = shown.full_screen ? SDL_WINDOW_BORDERLESS : 0;
    for (const auto& wish : wishes) {
        ask_for_format(wish[0], wish[1], samples);
        shown.window = SDL_CreateWindow(shown.title.c_str(), x, y, shown.dx, shown.dy,
                                        SDL_WINDOW_OPENGL | SDL_WINDOW_HIDDEN | border);
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

void display_swap() {
    if (shown.context) SDL_GL_SwapWindow(shown.window);
}

void* display_proc_address(const char* name) {
    return SDL_GL_GetProcAddress(name);
}

void display_get_mouse(int& x, int& y) {
    SDL_GetMouseState(&x, &y);
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
