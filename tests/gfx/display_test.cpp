#include "display/display.h"

#include <SDL.h>
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <sstream>
#include <string>

#include "gfx/gl_window.h"

using kind = display_event_kind;

// What came, "down 65/97" for a key with its virtual key and character, one word more for each modifier.
static std::string seen(int wait_ms = 0) {
    static constexpr const char* names[] = {"down",   "up",     "repeat",  "press",   "release", "wheel",
                                            "redraw", "active", "resized", "display", "quit"};
    std::vector<display_event> events;
    display_take_events(wait_ms, events);
    std::ostringstream text;
    for (const display_event& e : events) {
        if (e.kind == kind::redraw || e.kind == kind::activated) continue;
        if (text.tellp() > 0) text << ", ";
        text << names[static_cast<int>(e.kind)];
        if (e.kind <= kind::key_repeat) text << " " << e.vkey << "/" << int{e.character};
        text << (e.shift ? " shift" : "") << (e.alt ? " alt" : "") << (e.control ? " control" : "");
    }
    return text.str();
}

static void push_key(SDL_Keycode key, SDL_Scancode place, int mod = 0, bool repeat = false, Uint32 type = SDL_KEYDOWN) {
    SDL_Event event{};
    event.type = type;
    event.key.repeat = repeat;
    event.key.keysym = {place, key, static_cast<Uint16>(mod), 0};
    SDL_PushEvent(&event);
}

static void push_text(const char* text) {
    SDL_Event event{};
    event.type = SDL_TEXTINPUT;
    SDL_strlcpy(event.text.text, text, sizeof event.text.text);
    SDL_PushEvent(&event);
}

class display : public testing::Test {
  protected:
    void SetUp() override {
        setenv("SDL_VIDEODRIVER", "dummy", 1);
        ASSERT_TRUE(display_start()) << display_error();
        seen();
    }
};

TEST_F(display, a_key_and_its_text_are_one_event) {
    push_key(SDLK_a, SDL_SCANCODE_A);
    push_text("a");
    push_key(SDLK_a, SDL_SCANCODE_A, KMOD_LSHIFT, true);
    push_text("A");
    push_key(SDLK_a, SDL_SCANCODE_A, 0, false, SDL_KEYUP);
    EXPECT_EQ(seen(), "down 65/97, repeat 65/65 shift, up 65/0");

    push_key(SDLK_c, SDL_SCANCODE_C, KMOD_LCTRL);
    push_key(SDLK_v, SDL_SCANCODE_V, KMOD_LGUI);
    push_text("v");
    push_key(SDLK_x, SDL_SCANCODE_X, KMOD_LALT | KMOD_CAPS);
    push_text("X");
    push_key(SDLK_e, SDL_SCANCODE_E, KMOD_RALT | KMOD_MODE);
    push_text("\xC3\xA9");
    EXPECT_EQ(seen(), "down 67/0 control, down 86/0, down 88/88 alt, down 69/233")
        << "Ctrl and Super take the text away, Caps Lock and AltGr do not";

    push_key(SDLK_d, SDL_SCANCODE_D);
    push_text("\xE2\x82\xAC");  // no Latin-1
    push_text("\xC3\xB1o");     // an input method's, without a key
    EXPECT_EQ(seen(), "down 68/0, down 0/241, down 0/111");
    push_text("\xC3");
    EXPECT_EQ(seen(), "") << "broken text is dropped";
}

TEST_F(display, keys_have_the_numbers_that_bindings_and_widgets_know) {
    const struct {
        SDL_Keycode key;
        const char* wanted;
        SDL_Scancode place = SDL_SCANCODE_UNKNOWN;
        int mod = KMOD_NUM;
    } cases[] = {
        {SDLK_BACKSPACE, "down 8/8"},
        {SDLK_DELETE, "down 46/8"},
        {SDLK_LEFT, "down 37/28"},
        {SDLK_TAB, "down 9/9 shift", SDL_SCANCODE_TAB, KMOD_LSHIFT},
        {SDLK_KP_ENTER, "down 188/0"},
        {SDLK_F12, "down 123/0"},
        {SDLK_KP_9, "down 105/0"},
        {SDLK_KP_8, "down 38/30", SDL_SCANCODE_KP_8, 0},  // without Num Lock
        {SDLK_LSHIFT, ""},                                // no key of its own
        // Another layout: its letters where it has them, else the place counts.
        {SDLK_z, "down 90/0", SDL_SCANCODE_Y},
        {SDLK_AMPERSAND, "down 49/0", SDL_SCANCODE_1},
        {0x444, "down 65/0", SDL_SCANCODE_A},
    };
    for (const auto& [key, wanted, place, mod] : cases) {
        push_key(key, place, mod);
        EXPECT_EQ(seen(), wanted) << key;
    }
}

TEST_F(display, the_end_is_asked_for_by_signals_and_nothing_shows_without_a_screen) {
    raise(SIGTERM);
    EXPECT_EQ(seen(1000), "quit");
    unsetenv("SDL_VIDEODRIVER");
    unsetenv("DISPLAY");
    unsetenv("WAYLAND_DISPLAY");
    EXPECT_FALSE(display_message_box("main", "more"));
}

TEST(display_x11, a_window_survives_a_context_that_is_not_to_be_had) {
    gl_window window(1024, 768);
    context_facts facts{};
    ASSERT_TRUE(display_make_context(0, facts));
    EXPECT_TRUE(facts.rgba && facts.double_buffer);
    EXPECT_FALSE(display_make_context(1024, facts)) << "nobody has so many samples";
    ASSERT_TRUE(display_make_context(4, facts)) << "and the window is still to be had";
    EXPECT_EQ(facts.samples, 4);

    display_close_window();
    EXPECT_FALSE(display_window_is_open());
    EXPECT_FALSE(display_make_context(0, facts));
}
