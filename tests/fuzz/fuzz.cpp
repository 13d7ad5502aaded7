#include "fuzz/fuzz.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "runtime/product.h"
#include "support/alerts.h"

void must(bool fact, const char* what) {
    if (fact) return;
    std::fprintf(stderr, "BROKEN: %s\n", what);
    std::abort();
}

std::string_view view_of(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

bool survives(const std::function<void()>& work) {
    const alert_catcher alerts;
    app_done = 0;
    try {
        work();
        return true;
    } catch (const left&) {
        return false;
    }
}

memory_file::memory_file(std::string_view bytes) : fd(memfd_create("input", MFD_CLOEXEC)) {
    while (fd >= 0 && !bytes.empty()) {
        const ssize_t n = write(fd, bytes.data(), bytes.size());
        must(n > 0, "the input can be written to memory");
        bytes.remove_prefix(static_cast<std::size_t>(n));
    }
    name = "/proc/self/fd/" + std::to_string(fd);
}

memory_file::~memory_file() {
    close(fd);
}
