#include "app/programs/operators.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "runtime/memory.h"

// Larger than any address space, and not known to the compiler.
static volatile std::size_t too_large = SIZE_MAX / 2;

TEST(Operators, without_memory_the_handler_is_asked_until_there_is_none_or_it_throws) {
    static int asked;
    asked = 0;
    std::set_new_handler([] {
        if (++asked == 3) std::set_new_handler(nullptr);
    });
    EXPECT_THROW(static_cast<void>(operator new[](too_large)), std::bad_alloc);
    EXPECT_EQ(asked, 3);
    std::set_new_handler([] { throw std::bad_alloc(); });
    EXPECT_EQ(operator new(too_large, std::nothrow, "file", 1), nullptr);
    std::set_new_handler(nullptr);
}

struct fails_to_begin {
    fails_to_begin() { throw 1; }
};

TEST(Operators, a_failing_constructor_gives_its_block_back) {
    // A leak is seen by the allocator's own count.
    const auto in_use = [] { return mallinfo2().uordblks; };
    const auto before = in_use();
    for (int i = 0; i < 1000; ++i) {
        EXPECT_THROW(new ("file", 1) fails_to_begin, int);
        EXPECT_THROW(new (std::nothrow, "file", 1) fails_to_begin[50], int);
    }
    EXPECT_LT(in_use(), before + 16000);
}
