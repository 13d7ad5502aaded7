// The global operators new and delete, on the program's allocator. Linked into the programs themselves and not into a
// library, so that a test may bring operators of its own; and not with a sanitizer, which has its own and checks by
// them that each new meets its delete.
#include "app/programs/operators.h"

#include <new>

#include "runtime/memory.h"

// The new-handler makes room or throws; without one there is nothing left to try.
static void* allocate(std::size_t size) {
    for (;;) {
        if (void* const memory = nedmalloc(size ? size : 1)) return memory;
        const std::new_handler make_room = std::get_new_handler();
        if (!make_room) return nullptr;
        make_room();
    }
}

void* operator new(std::size_t size, const char*, int) {
    if (void* const memory = allocate(size)) return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&, const char*, int) noexcept {
    try {
        return allocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void* operator new(std::size_t size) {
    return operator new(size, "anonymous new", 0);
}
void* operator new[](std::size_t size) {
    return operator new(size, "anonymous new[]", 0);
}
void* operator new[](std::size_t size, const char* file, int line) {
    return operator new(size, file, line);
}
void* operator new(std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return operator new(size, nothrow, "anonymous new-nt", 0);
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow) noexcept {
    return operator new(size, nothrow, "anonymous new-nt[]", 0);
}
void* operator new[](std::size_t size, const std::nothrow_t& nothrow, const char* file, int line) noexcept {
    return operator new(size, nothrow, file, line);
}

void operator delete(void* memory) noexcept {
    if (memory) nedfree(memory);
}
void operator delete[](void* memory) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    operator delete(memory);
}

// Called where a constructor throws in an expression with the matching new.
void operator delete(void* memory, const char*, int) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, const char*, int) noexcept {
    operator delete(memory);
}
void operator delete(void* memory, const std::nothrow_t&, const char*, int) noexcept {
    operator delete(memory);
}
void operator delete[](void* memory, const std::nothrow_t&, const char*, int) noexcept {
    operator delete(memory);
}
