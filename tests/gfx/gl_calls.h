// gl_calls.h: a layer between the program and OpenGL that sees some of its calls, hands them on, and can pretend to be
// another driver. Without a context OpenGL itself ignores every call, so that layout can be watched without a display.
#pragma once

#include <map>
#include <string>
#include <vector>

struct drawn_vertex {
    float x, y, s, t;
};

struct gl_calls_t {
    bool watching = true;              // false: hands on, allocates nothing
    std::map<std::string, int> count;  // by name, of the calls that are watched
    std::vector<drawn_vertex> vertices;
    std::map<unsigned, const char*> pretended;  // what glGetString gives, by name; empty: the true ones

    int total() const;
};
extern gl_calls_t gl_calls;
void watch_anew();  // forgets what was seen
