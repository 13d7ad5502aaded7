#include "platform/callers.h"

#include <backtrace.h>
#include <dlfcn.h>

#include <cstdint>
#include <cstring>

// Process. The library's memory of what it has read; it maps what it needs itself and asks no allocator.
static backtrace_state* state;

static void ignore_error(void*, const char*, int) {}  // as good as nothing found

void callers_init() {
    if (!state) state = backtrace_create_state(nullptr, 1, ignore_error, nullptr);
}

template <std::size_t size>
static void copy_text(char (&to)[size], const char* text) {
    const std::size_t length = strnlen(text, size - 1);
    std::memcpy(to, text, length);
    to[length] = '\0';
}

static void take_symbol(void* data, std::uintptr_t, const char* name, std::uintptr_t start, std::uintptr_t) {
    auto& info = *static_cast<symbol_info*>(data);
    if (!name || !start) return;
    copy_text(info.symbol, name);
    info.symbol_address = reinterpret_cast<const void*>(start);
}

// Called for each function at the address, those that were taken into their callers first: the first place is where it
// happened, the last name is that of the whole.
static int take_place(void* data, std::uintptr_t, const char* source, int line, const char* function) {
    auto& info = *static_cast<symbol_info*>(data);
    if (source && info.line < 0) {
        copy_text(info.source, source);
        info.line = line;
    }
    if (function) copy_text(info.symbol, function);
    return 0;
}

void find_symbol(const void* address, symbol_info* info) {
    *info = symbol_info{};
    info->line = -1;
    Dl_info loaded{};
    if (!dladdr(address, &loaded)) return;
    copy_text(info->image, loaded.dli_fname ? loaded.dli_fname : "");
    info->image_base = loaded.dli_fbase;
    if (loaded.dli_sname) copy_text(info->symbol, loaded.dli_sname);
    info->symbol_address = loaded.dli_saddr;
    if (!state) return;
    const auto at = reinterpret_cast<std::uintptr_t>(address);
    backtrace_syminfo(state, at, take_symbol, ignore_error, info);
    backtrace_pcinfo(state, at, take_place, ignore_error, info);
}

struct walk_t {
    bool (*visit)(void* data, const void* address);
    void* data;
};

static int take_caller(void* data, std::uintptr_t address) {
    constexpr std::uintptr_t end_of_stack = UINTPTR_MAX;  // one less than no address
    const auto& walk = *static_cast<walk_t*>(data);
    return address == end_of_stack || !walk.visit(walk.data, reinterpret_cast<const void*>(address));
}

void walk_callers(bool (*visit)(void* data, const void* address), void* data) {
    walk_t walk{visit, data};
    if (state) backtrace_simple(state, 1, take_caller, ignore_error, &walk);
}
