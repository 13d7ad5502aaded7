// callers.h: what lies at an address of the running program - image, function, source and line - and by which calls a
// thread came to where it is. The compiler's own library reads the tables for unwinding, symbols and lines
// (callers.cpp); where it is not to be had, images and exported functions are all that is known (callers_unknown.cpp).
// Nothing but callers_init allocates, and nothing throws, so that a signal handler may ask; the records are large, its
// stack must have 64 KB.
#pragma once

struct symbol_info {
    char image[1024];  // path; empty: unknown, as the other texts
    const void* image_base;
    char symbol[1024];  // plain in C and for what is local to a file, else as the linker knows it
    const void* symbol_address;
    char source[1024];
    int line;  // -1: unknown
};

void callers_init();  // at start, before the others are of use

// What cannot be found stays empty, null or -1. For a call, `address` has to lie in it: the address to which it returns
// may be another line's already, or another function's.
void find_symbol(const void* address, symbol_info* info);

// Hands out where the calling thread stands and then each of its callers, as find_symbol wants them, until `visit`
// returns false. In a signal handler the way leads through it to what was interrupted.
void walk_callers(bool (*visit)(void* data, const void* address), void* data);
