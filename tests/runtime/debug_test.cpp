#include "runtime/debug.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <regex>
#include <streambuf>

#include "runtime/log.h"
#include "runtime/startup.h"
#include "runtime/thread.h"
#include "support/own_copy.h"

static std::string printed(const std::function<void(std::FILE*)>& print) {
    char* text = nullptr;
    std::size_t size = 0;
    std::FILE* const out = open_memstream(&text, &size);
    print(out);
    std::fclose(out);
    std::string result(text, size);
    std::free(text);
    return result;
}

static auto lines_in(const std::string& text) {
    return std::count(text.begin(), text.end(), '\n');
}

// Crashes of a copy of this program.

[[gnu::noinline]] static int run_away(volatile int* depth) {
    volatile int here = *depth + 1;
    return here < 0 ? 0 : run_away(&here) + here;
}
[[gnu::noinline]] static void* crash_deep(void*) {
    volatile int depth = 0;
    return reinterpret_cast<void*>(static_cast<std::intptr_t>(run_away(&depth)));
}
static void start() {
    char program[] = "program";
    char* argv[] = {program};
    runtime_start(1, argv);
}
static void crash_in_worker() {
    start();
    UTL_thread thread, id, join;
    THREAD_create(crash_deep, nullptr, &thread, &id, &join, 0);
    UTL_thread_join(&thread, join);
}
struct crashing_buffer : std::streambuf {
    std::streamsize xsputn(const char*, std::streamsize) override { return std::raise(SIGFPE); }
};
static void crash_in_reporter() {
    start();
    static crashing_buffer buffer;
    static_cast<std::ostream&>(xer).rdbuf(&buffer);
    __builtin_trap();
}

static const own_copy::job jobs[] = {
    {"deep", [] { start(), crash_deep(nullptr); }},
    {"worker", crash_in_worker},
    {"reporter", crash_in_reporter},
};

#ifdef __SANITIZE_THREAD__
constexpr bool threads_are_watched = true;
#else
constexpr bool threads_are_watched = false;
#endif

TEST(Crash, of_a_runaway_recursion_leaves_a_report_of_a_hundred_lines_from_any_thread) {
    if (threads_are_watched) GTEST_SKIP() << "the thread sanitizer has a signal stack of its own";
    const own_copy copy;
    const std::string path = copy.app + "crash_log.txt";
    for (const char* where : {"deep", "worker"}) {
        const int status = copy.run(where).status;
        ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT) << where << status;
        const std::string report = scratch::read(path);
        EXPECT_EQ(lines_in(report), 3 + 100);
        EXPECT_TRUE(std::regex_search(
            report,
            std::regex("\n  99\\) run_away \\+ [0-9]+ \\(debug_test\\.cpp:[0-9]+\\) \\(program \\+ [0-9]+\\)\n$")))
            << report;
        std::filesystem::remove(path);
    }
}

TEST(Crash, inside_the_reporter_keeps_the_report_and_ends_the_process) {
    if (threads_are_watched) GTEST_SKIP() << "the thread sanitizer has a signal stack of its own";
    const own_copy copy;
    const std::string path = copy.app + "crash_log.txt";
    copy.home.write("app/crash_log.txt", "an earlier report\n");
    const int status = copy.run("reporter").status;
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGFPE) << status;
    const std::string report = scratch::read(path);
    EXPECT_TRUE(report.starts_with("an earlier report\nill (Illegal instruction)\nSig no: 4, ")) << report;
    EXPECT_NE(report.find("crash_in_reporter + "), std::string::npos) << report;
}

TEST(Crash, report_goes_to_the_state_folder_and_then_to_standard_error) {
    const own_copy copy;
    std::filesystem::create_directory(copy.app + "crash_log.txt");  // nothing can be written there, not even by root
    copy.run("reporter");
    EXPECT_TRUE(scratch::read(copy.state + "velaris/crash_log.txt").starts_with("ill (")) << copy.state;
    std::filesystem::remove_all(copy.state);
    copy.home.write("state", "a file");
    EXPECT_TRUE(copy.run("reporter").err.starts_with("ill (Illegal instruction)\n"));
}

// Pieces of the report.

TEST(StackDump, ends_quietly_where_the_chain_makes_no_sense_and_keeps_what_came_before) {
    stack_frame chain[120];
    const auto lines_of = [&](const void* pc) {
        return lines_in(printed([&](std::FILE* out) { UTL_dump_stack(out, chain, pc); }));
    };
    for (stack_frame& frame : chain)
        frame = {&frame + 1, &chain};
    EXPECT_EQ(lines_of(nullptr), 0);
    const auto lines_with_link = [&](const void* link) {
        chain[3].link = static_cast<const stack_frame*>(link);
        return lines_of(chain);
    };
    EXPECT_EQ(lines_with_link(nullptr), 4);
    EXPECT_EQ(lines_with_link(chain), 4);                                           // a circle
    EXPECT_EQ(lines_with_link(reinterpret_cast<const void*>(UINTPTR_MAX / 2)), 5);  // nowhere
}
