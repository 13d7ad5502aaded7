#include "runtime/debug.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>

#include "platform/folders.h"
#include "platform/interrupt.h"
#include "platform/memory_map.h"
#include "platform/process.h"
#include "platform/report_file.h"
#include "runtime/log.h"
#include "runtime/product.h"
#include "runtime/utf8.h"

static const int fatal_signals[] = {SIGILL, SIGFPE, SIGBUS, SIGSEGV, SIGTRAP,
#ifdef SIGEMT
                                    SIGEMT,
#endif
                                    SIGSYS, SIGABRT};
constexpr unsigned longest_report_s = 30;
constexpr std::size_t signal_stack_size = 256 * 1024;  // a lookup takes some 30 KB of it

// Process. All of it is made at start-up, as a handler cannot ask for memory; what a crash finds is set by its handler.
static struct {
    char path[4096];  // of crash_log.txt; empty: standard error
    std::FILE* out;   // a stream that writes to fd
    char buffer[BUFSIZ];
    int fd = -1;                       // open while a crash is told
    std::atomic<pid_t> reporting = 0;  // the thread that does; 0: none
    char uncaught[512];                // "type: what" of the exception that is ending the process; empty: none
} report;

static bool take_folder_for_report(const std::string& folder) {
    const std::string path = folder + "crash_log.txt";
    if (folder.empty() || path.size() >= sizeof report.path) return false;
    // Whether it can be appended to, or made.
    struct stat info {};
    const bool usable = lstat(path.c_str(), &info) == 0
                            ? S_ISREG(info.st_mode) && faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0
                            : errno == ENOENT && folder_is_writable(folder);
    if (usable) path.copy(report.path, sizeof report.path - 1);
    return usable;
}

// Notes what would be lost with the exception; abort leads to the report.
[[noreturn]] static void on_terminate() {
    if (const std::type_info* const type = abi::__cxa_current_exception_type()) {
        int failed = 0;
        char* const readable = abi::__cxa_demangle(type->name(), nullptr, nullptr, &failed);
        std::string words = readable ? readable : type->name();
        std::free(readable);
        try {
            throw;
        } catch (const std::exception& e) {
            words += std::string(": ") + e.what();
        } catch (...) {
        }
        printable(words).copy(report.uncaught, sizeof report.uncaught - 1);
    }
    std::abort();
}

void UTL_debug_init() {
    if (report.out) return;
    ignore_sigpipe();
    callers_init();
    std::set_terminate(on_terminate);

    // The place of the report.
    std::string folder;
    get_OS_abs_path(is_dvd ? os_dir_desktop : os_dir_this_app, &folder);
    if (!take_folder_for_report(folder)) take_folder_for_report(state_folder());

    // A stream without a file yet: the file is made by the first crash only, and opening a stream allocates. By the
    // line, so that what was found is kept if the search for the next line crashes.
    const auto write_report = [](void*, const char* bytes, std::size_t size) { return write(report.fd, bytes, size); };
    report.out = fopencookie(nullptr, "w", {.read = nullptr, .write = write_report, .seek = nullptr, .close = nullptr});
    if (report.out) std::setvbuf(report.out, report.buffer, _IOLBF, sizeof report.buffer);
    static auto* const stack_of_main_thread = new UTL_signal_stack;  // until the process ends
    static_cast<void>(stack_of_main_thread);

    struct sigaction action {};
    action.sa_sigaction = fatal_signal_handler;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    sigemptyset(&action.sa_mask);
    for (const int signal : fatal_signals)
        if (sigaction(signal, &action, nullptr) != 0) std::fprintf(stderr, "Failed to installed signal: %d\n", signal);
}

UTL_signal_stack::UTL_signal_stack() {
    memory = mmap(nullptr, signal_stack_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return;
    mprotect(memory, page_size(), PROT_NONE);
    stack_t stack{};
    stack.ss_sp = memory;
    stack.ss_size = signal_stack_size;
    sigaltstack(&stack, &before);
}

UTL_signal_stack::~UTL_signal_stack() {
    if (memory == MAP_FAILED) return;
    sigaltstack(&before, nullptr);
    munmap(memory, signal_stack_size);
}

int UTL_valid_memory(const void* start, unsigned size, int need_read, int need_write) {
    auto at = reinterpret_cast<std::uintptr_t>(start);
    const std::uintptr_t end = at + size;
    if (end < at) return 0;
    memory_region region;
    for (; at < end; at = region.end) {
        if (!region_at_or_above(at, region) || region.start > at) return 0;
        if ((need_read && !region.readable) || (need_write && !region.writable)) return 0;
    }
    return 1;
}

void UTL_get_debug_symbol(const void* address, symbol_info* info) {
    find_symbol(address, info);
}

static const char* last_component(const char* path) {
    const char* last = path;
    for (; *path; ++path)
        if (*path == '/' || *path == '\\') last = path + 1;
    return last;
}

static std::intptr_t distance(const void* address, const void* from) {
    return static_cast<std::intptr_t>(reinterpret_cast<std::uintptr_t>(address) -
                                      reinterpret_cast<std::uintptr_t>(from));
}

static void print_address(std::FILE* out, const void* address) {
    std::fprintf(out, "0x%0*zx", static_cast<int>(2 * sizeof address), reinterpret_cast<std::uintptr_t>(address));
}

void print_symbol(std::FILE* out, const void* address) {
    symbol_info info;
    UTL_get_debug_symbol(address, &info);
    if (!info.symbol_address)
        print_address(out, address);
    else if (*info.symbol)
        std::fputs(info.symbol, out);
    else
        print_address(out, info.symbol_address);
    if (info.symbol_address) std::fprintf(out, " + %zd", distance(address, info.symbol_address));

    if (*info.source) std::fprintf(out, " (%s:%d)", last_component(info.source), info.line);

    if (!*info.image && !info.image_base) {
        std::fputs(" (?\?\?)\n", out);
        return;
    }
    std::fputs(" (", out);
    if (*info.image)
        std::fputs(last_component(info.image), out);
    else
        print_address(out, info.image_base);
    std::fprintf(out, " + %zd)\n", distance(address, info.image_base));
}

// The sanitizers know nothing of frames, and a broken chain may lead anywhere that can be read.
__attribute__((no_sanitize("address", "thread", "undefined"))) static stack_frame copy_of(const stack_frame* frame) {
    return {.link = frame->link, .return_address = frame->return_address};
}

// From line 1 on, as UTL_dump_stack.
static void dump_frames(std::FILE* out, const stack_frame* frame) {
    for (int n = 1; frame && n <= 99; ++n) {
        if (!UTL_valid_memory(frame, sizeof *frame, 1, 1)) break;
        const stack_frame here = copy_of(frame);
        // The stack grows down, so a caller's frame lies higher; this ends circles too.
        if (here.link <= frame) break;
        std::fprintf(out, " % 2d) ", n);
        // The call is before the address that it returns to.
        print_symbol(out, static_cast<const char*>(here.return_address) - 1);
        frame = here.link;
    }
}

void UTL_dump_stack(std::FILE* out, const stack_frame* frame, const void* pc) {
    if (!pc) return;
    std::fprintf(out, " % 2d) ", 0);
    print_symbol(out, pc);
    dump_frames(out, frame);
}

namespace {

// A walk from inside the handler meets the handler first; the report begins with what was interrupted.
struct report_walk {
    std::FILE* out;
    const void* interrupted;
    int lines;  // 0: still in the handler
};

bool report_caller(void* data, const void* address) {
    auto& walk = *static_cast<report_walk*>(data);
    if (walk.lines == 0 && address != walk.interrupted) return true;
    std::fprintf(walk.out, " % 2d) ", walk.lines);
    print_symbol(walk.out, address);
    return ++walk.lines < 100;
}

}  // namespace

static void dump_interrupted_code(std::FILE* out, void* context) {
    const mcontext_t& machine = static_cast<ucontext_t*>(context)->uc_mcontext;
#if defined(__x86_64__)
    const auto frame = machine.gregs[REG_RBP], pc = machine.gregs[REG_RIP];
#elif defined(__i386__)
    const auto frame = machine.gregs[REG_EBP], pc = machine.gregs[REG_EIP];
#elif defined(__aarch64__)
    const auto frame = machine.regs[29], pc = machine.pc;
#else
    const std::uintptr_t frame = 0, pc = 0;
    static_cast<void>(machine);
#endif
    report_walk walk{out, reinterpret_cast<const void*>(pc), 0};
    walk_callers(report_caller, &walk);
    // No table leads on from what is no code, as after a call of a null function; the frames still tell who called.
    const auto* const first = reinterpret_cast<const stack_frame*>(frame);
    if (walk.lines == 0)
        UTL_dump_stack(out, first, walk.interrupted);
    else if (walk.lines == 1)
        dump_frames(out, first);
}

static void print_report(std::FILE* out, int signal, const siginfo_t& info, void* context) {
    // What ran, and when. Worked out here, as the C library's own dates take a lock.
    using namespace std::chrono;
    const auto now = time_point_cast<seconds>(system_clock::now());
    const auto today = floor<days>(now);
    const year_month_day date(today);
    const hh_mm_ss time(now - today);
    std::fprintf(out, "%s, %s, build %d, %d-%02u-%02u %02d:%02d:%02d UTC, %s thread %d\n",
                 program_invocation_short_name, version_text, version_number, static_cast<int>(date.year()),
                 static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                 static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                 static_cast<int>(time.seconds().count()), gettid() == getpid() ? "main" : "another", gettid());
    if (*report.uncaught) std::fprintf(out, "Nobody caught an exception, %s\n", report.uncaught);

    // Why it ended.
    const char* const name = signal < 32 ? sigabbrev_np(signal) : nullptr;
    if (name) {
        for (const char* letter = name; *letter; ++letter)
            std::fputc(std::tolower(static_cast<unsigned char>(*letter)), out);
        std::fprintf(out, " (%s)\n", sigdescr_np(signal));
    } else {
        std::fprintf(out, "An unknown signal %d has been caught.\n", signal);
    }
    std::fprintf(out, "Sig no: %d, sig err: %d, sig code: %d, status: %d\n", info.si_signo, info.si_errno, info.si_code,
                 info.si_status);
    // Decimal behind a 0x, and of the low half only: whoever reads these reports knows the line by this form.
    std::fprintf(out, "Addy: 0x%08d\n", static_cast<int>(reinterpret_cast<std::uintptr_t>(info.si_addr)));

    // Where it was, and by which calls.
    dump_interrupted_code(out, context);
    std::fflush(out);
}

// Only one report is written. The thread that comes here a second time has crashed in its own report and dies of that;
// any other waits for the end.
static void begin_report(int signal) {
    pid_t owner = 0;
    const pid_t self = gettid();
    if (report.reporting.compare_exchange_strong(owner, self)) return;
    if (owner == self) {
        std::signal(signal, SIG_DFL);
        raise(signal);
        sigset_t this_one;
        sigemptyset(&this_one);
        sigaddset(&this_one, signal);
        pthread_sigmask(SIG_UNBLOCK, &this_one, nullptr);
    }
    for (;;)
        pause();
}

void fatal_signal_handler(int signal, siginfo_t* info, void* context) {
    begin_report(signal);
    std::signal(SIGALRM, SIG_DFL);
    alarm(longest_report_s);

    restore_terminal();

    if (*report.path && report.out) report.fd = open_report(report.path, report_begin::behind);
    print_report(report.fd >= 0 ? report.out : stderr, signal, *info, context);
    if (report.fd >= 0) {
        close(report.fd);
        if (isatty(STDERR_FILENO)) {
            std::fprintf(stderr, "\nThis program has crashed. A report was left in %s\n", report.path);
            std::fflush(stderr);
        }
    }

    xer << "This application has crashed.  Please send the file crash_log.txt to Tarvex.\n" << std::flush;
    remove_temp_folder();
    std::signal(SIGABRT, SIG_DFL);
    std::abort();
}

void dump_hex(std::FILE* out, const void* data, int length) {
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (; length > 0; bytes += 16, length -= 16) {
        for (int i = 0; i < 16; ++i) {
            if (i % 4 == 0) std::fputc(' ', out);
            if (i < length)
                std::fprintf(out, "%02X", bytes[i]);
            else
                std::fputs("  ", out);
        }
        std::fputs("     ", out);
        for (int i = 0; i < 16 && i < length; ++i) {
            if (i % 4 == 0) std::fputc(' ', out);
            std::fputc(bytes[i] >= ' ' && bytes[i] <= '~' ? bytes[i] : '.', out);
        }
        std::fputc('\n', out);
    }
}
