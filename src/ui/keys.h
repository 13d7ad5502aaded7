// keys.h: from a key event to what it does: first the widget that has the keyboard, then the open window, then the
// table of key bindings. A virtual key is a small number of the program's own, the same on every system and layout.
#pragma once

#include <string>
#include <vector>

enum : int { key_kind_down = 3, key_kind_up = 4, key_kind_repeat = 5 };

extern int return_hit, escape_hit, delete_hit;  // of this frame
extern void (*close_open_window)();             // Return with a window open; the shell supplies it

struct key_binding {
    int vkey = 0;
    int flags = 0;
    int command = 0;  // index of cmnd
    int down = 0;
};

class keys_class {
  public:
    // An event as the display layer gives it: layout and modifiers are already worked into virtual key and character.
    void handle_key_raw(int event_kind, int vkey, int character, bool shift, bool alt, bool control);
    void handle_key(int character, int vkey, int flags);  // flag word of focus.h
    void execute_key_cmnd(int vkey, int flags);           // presses on a key down, releases on a key up
    void run_repeat_keys();                               // once a frame: commands held by a key act
    // 0: the table at its default; 1: the end of the run, bindings are dropped, no file is written.
    void keys_io(int dir);

    int get_key_for_cmnd(int command) const;      // index of the binding, -1 if none
    int key_bound_to(int vkey, int flags) const;  // index of the command, -1 if none
    void bind(int vkey, int flags, int command);  // in place of what the key ran before
    const std::vector<key_binding>& all() const { return bindings; }

    // Names. A number that is no key of ours gives 0, "<none>", or itself as text.
    static void ascii_to_vkey(int ascii, int& vkey, int& flags);
    static int str_to_vkey(const std::string& name);  // display name, upper and lower case alike
    static std::string vkey_to_str(int vkey);
    static std::string vkey_to_code(int vkey);        // "QRNK_VK_..."
    static int str_to_flag(const std::string& text);  // finds "SHIFT", "ALT" and "CTRL" in it
    static std::string flag_to_str(int flags);        // "SHIFT+CTRL"
    static std::string flag_to_code(int flags);       // "QRNK_SHIFT | QRNK_CTRL", "0" for none

    int last_vkey = 0, last_flags = 0;  // of the last key that no widget used

  private:
    std::vector<key_binding> bindings;
};
extern keys_class keys;
