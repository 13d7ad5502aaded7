#include "runtime/debug.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <stdexcept>
#include <streambuf>
#include <utility>

#include "runtime/log.h"
#include "runtime/startup.h"
#include "runtime/thread.h"
#include "support/own_copy.h"

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

// Called back by a library that was built without frame pointers.
[[gnu::noinline]] static int crash_in_comparison(const void*, const void*) {
    __builtin_trap();
}
constexpr int line_of_sort = __LINE__ + 4;
[[gnu::noinline]] static void crash_in_library() {
    start();
    volatile int numbers[] = {2, 1};
    std::qsort(const_cast<int*>(numbers), 2, sizeof numbers[0], crash_in_comparison);
    numbers[0] = 3;
}
[[gnu::noinline]] static void throw_reason() {
    throw std::runtime_error("the\033 reason");
}
static void crash_by_exception() noexcept {  // or the test library would catch it
    start();
    throw_reason();
}

static const own_copy::job jobs[] = {
    {"deep", [] { start(), crash_deep(nullptr); }},
    {"worker", crash_in_worker},
    {"reporter", crash_in_reporter},
    {"library", crash_in_library},
    {"exception", crash_by_exception},
    {"abort", [] { start(), std::abort(); }},
};

#ifdef __SANITIZE_THREAD__
constexpr bool threads_are_watched = true;
#else
constexpr bool threads_are_watched = false;
#endif

class Crash : public testing::Test {
  protected:
    void SetUp() override {
        if (threads_are_watched) GTEST_SKIP() << "the thread sanitizer has a signal stack of its own";
    }
    // What a run that does the job, and dies of it, leaves beside its program.
    std::string report_of(const char* job, int death = SIGABRT) const {
        const own_copy::outcome run = copy.run(job);
        EXPECT_TRUE(WIFSIGNALED(run.status) && WTERMSIG(run.status) == death) << job << run.status;
        EXPECT_EQ(run.err, "") << "only a terminal is told";
        const std::string report = scratch::read(path);
        std::filesystem::remove(path);
        return report;
    }
    const own_copy copy;
    const std::string path = copy.app + "crash_log.txt";
};

TEST_F(Crash, of_a_runaway_recursion_leaves_a_report_of_a_hundred_lines_from_any_thread) {
    for (const char* where : {"deep", "worker"}) {
        const std::string report = report_of(where);
        EXPECT_EQ(lines_in(report), 4 + 100);
        EXPECT_TRUE(std::regex_search(
            report,
            std::regex("\n  99\\) run_away \\+ [0-9]+ \\(debug_test\\.cpp:[0-9]+\\) \\(program \\+ [0-9]+\\)\n$")))
            << report;
    }
}

TEST_F(Crash, report_tells_what_ran_why_it_ended_and_by_which_calls) {
    const std::string head =
        "^program, Velaris 9\\.00 Beta-19, build 90019, 20[0-9-]+ [0-9:]+ UTC, main thread [0-9]+\n";
    const std::string sorting =
        "crash_in_library \\+ [0-9]+ \\(debug_test\\.cpp:" + std::to_string(line_of_sort) + "\\)";
    const std::pair<const char*, std::string> cases[] = {
        {"library", head +
                        "ill \\(Illegal instruction\\)\nSig no: 4, [^\n]*\nAddy: [^\n]*\n  0\\) crash_in_comparison "
                        "\\+ 0 \\(debug_test\\.cpp:[^]* \\(libc\\.so[^]*" +
                        sorting},
        {"exception", head + "Nobody caught an exception, std::runtime_error: the\\? reason\nabrt \\(Aborted\\)\n[^]*"
                             "throw_reason "},
        {"abort", head + "abrt \\(Aborted\\)\n"},
    };
    for (const auto& [job, wanted] : cases) {
        const std::string report = report_of(job);
        EXPECT_TRUE(std::regex_search(report, std::regex(wanted))) << job << "\n" << report;
    }
}

TEST_F(Crash, inside_the_reporter_keeps_the_report_and_ends_the_process) {
    copy.home.write("app/crash_log.txt", "an earlier report\n");
    const std::string report = report_of("reporter", SIGFPE);
    EXPECT_TRUE(report.starts_with("an earlier report\nprogram, ")) << report;
    EXPECT_NE(report.find("crash_in_reporter + "), std::string::npos) << report;
}

TEST_F(Crash, report_goes_to_the_state_folder_and_then_to_standard_error) {
    std::filesystem::create_directory(path);  // nothing can be written there, not even by root
    copy.run("reporter");
    EXPECT_TRUE(scratch::read(copy.state + "velaris/crash_log.txt").starts_with("program, ")) << copy.state;
    std::filesystem::remove_all(copy.state);
    copy.home.write("state", "a file");
    EXPECT_TRUE(copy.run("reporter").err.starts_with("program, "));
}

TEST(StackDump, ends_quietly_where_the_chain_makes_no_sense_and_keeps_what_came_before) {
    stack_frame chain[120];
    for (stack_frame& frame : chain)
        frame = {&frame + 1, &chain};
    const std::pair<const void*, int> links[] = {
        {nullptr, 4}, {chain, 4}, {reinterpret_cast<const void*>(UINTPTR_MAX / 2), 5}};  // a circle; nowhere
    for (const auto& [link, lines] : links) {
        chain[3].link = static_cast<const stack_frame*>(link);
        char* text = nullptr;
        std::size_t size = 0;
        std::FILE* const out = open_memstream(&text, &size);
        UTL_dump_stack(out, chain, chain);
        std::fclose(out);
        EXPECT_EQ(lines_in(text), lines);
        std::free(text);
    }
}
