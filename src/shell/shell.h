// shell.h: from nothing to a live window and back: start-up, drawing context, start-up progress screen.
// Everything is on the main thread. A window or context that cannot be had is a fatal alert that says what is needed.
#pragma once

#include <string>

// What the application hangs into the frame loop; filled in before MACIBM_init.
struct shell_hooks_t {
    void (*backdrop)();                       // draws the main screen as it stands, and nothing else; may be null
    void (*update)();                         // the main screen, once a frame while no modal window is open
    void (*handle_menu)(int menu, int item);  // a chosen menu item; may be null
    void (*function_key)(int vkey);           // may be null
    bool (*is_working)();                     // there is more to do than to wait for the user; may be null
    int (*may_use_max_cpu)();                 // non-zero: frames follow at once, no event is waited for; may be null
};
extern shell_hooks_t shell_hooks;

void MACIBM_init(int argc, char* const* argv);  // the first call of main
void MACIBM_setres(int entering);               // 1 at start, 0 at the end
int MACIBM_make_context(int which);             // 0 the main window; 1 on success
void MACIBM_nuke_context(int which);
// Shows the canvas at this scale, 0 for what suits the display, or at what there is room for.
void MACIBM_set_scale(float asked);
void MACIBM_follow_surface();  // the drawing surface has another size: the canvas stays whole and in its middle
void MACIBM_remake_context();  // the context was lost: a new one, with all pictures and the state
// The start-up progress screen; `fraction` null takes one hundredth more with each call.
void MACIBM_show_init(const std::string& text, const float* fraction);
void MACIBM_setupforlang();

extern int ogl_inited;                        // alerts may be drawn
extern int plot_init_lights;                  // without it MACIBM_show_init draws nothing
extern int g_mon_x_res_now, g_mon_y_res_now;  // size of the main display
