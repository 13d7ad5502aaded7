// gl_window.h: a window with a live context, set up as at start-up, on a display that belongs to the test process
// alone:
// nothing pops up on a developer's desktop, and every machine draws with the same software renderer.
#pragma once

#include <ostream>
#include <vector>

// Starts the display, once a process; it ends with the process, however that ends. A test without it has no display.
void need_test_display();

struct rgb {
    int r, g, b;
    bool operator==(const rgb&) const = default;
};
std::ostream& operator<<(std::ostream& out, const rgb& c);
int difference(const rgb& a, const rgb& b);  // the largest of a channel

// What stands on the surface, rows from the bottom up.
class picture {
  public:
    picture(int width, int height) : dx(width), dy(height), bytes(static_cast<std::size_t>(width * height) * 3) {}
    rgb at(int x, int y) const;
    // The largest difference between what stands at `left`, `low` and a part of an image, dx by dy from its `x`, `y`,
    // laid over black: RGBA, or coverage in white where `channels` is 1.
    int difference_from(const unsigned char* image, int image_dx, int channels, int x, int y, int dx, int dy, int left,
                        int low) const;
    // The smallest rectangle that holds all pixels of another colour than `back`: left, bottom, right, top; the last
    // two are left out of it.
    std::vector<int> extent(const rgb& back) const;

    int dx, dy;
    std::vector<unsigned char> bytes;
};

class gl_window {
  public:
    explicit gl_window(int dx = 1024, int dy = 768);
    ~gl_window();
    gl_window(const gl_window&) = delete;
    gl_window& operator=(const gl_window&) = delete;

    void make_context();  // again, as when it was lost
    void clear();         // black
    picture grab() const;
};
