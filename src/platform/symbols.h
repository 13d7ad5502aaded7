// symbols.h: what lies at an address of the running program: image, function, source and line.
// The image and its exported functions are known to the dynamic loader. Hidden functions come from the symbol table of
// the image's file, source and line from its debug information; a stripped file has neither.
// Nothing allocates or throws, so that a signal handler may ask; the records are large, its stack must have 64 KB.
#pragma once

struct symbol_info {
    char image[1024];  // path; empty: unknown, as the other texts
    const void* image_base;
    char symbol[1024];  // without arguments where the name is a plain C++ one, else as the linker knows it
    const void* symbol_address;
    char source[1024];
    int line;  // -1: unknown
};

// What cannot be found stays empty, null or -1.
void find_symbol(const void* address, symbol_info* info);
