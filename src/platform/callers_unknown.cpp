// In the place of callers.cpp where the compiler brings no library for this: the dynamic loader's knowledge alone.
#include <dlfcn.h>

#include <cstring>

#include "platform/callers.h"

void callers_init() {}

void find_symbol(const void* address, symbol_info* info) {
    *info = symbol_info{};
    info->line = -1;
    Dl_info loaded{};
    if (!dladdr(address, &loaded)) return;
    if (loaded.dli_fname) std::strncpy(info->image, loaded.dli_fname, sizeof info->image - 1);
    if (loaded.dli_sname) std::strncpy(info->symbol, loaded.dli_sname, sizeof info->symbol - 1);
    info->image_base = loaded.dli_fbase;
    info->symbol_address = loaded.dli_saddr;
}

void walk_callers(bool (*)(void*, const void*), void*) {}
