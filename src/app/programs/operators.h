// operators.h: the forms of new that name a source place. The place is not kept; the forms stay for builds that do.
#pragma once

#include <cstddef>
#include <new>

void* operator new(std::size_t size, const char* file, int line);
void* operator new[](std::size_t size, const char* file, int line);
void* operator new(std::size_t size, const std::nothrow_t&, const char* file, int line) noexcept;
void* operator new[](std::size_t size, const std::nothrow_t&, const char* file, int line) noexcept;
void operator delete(void* memory, const char* file, int line) noexcept;
void operator delete[](void* memory, const char* file, int line) noexcept;
void operator delete(void* memory, const std::nothrow_t&, const char* file, int line) noexcept;
void operator delete[](void* memory, const std::nothrow_t&, const char* file, int line) noexcept;
