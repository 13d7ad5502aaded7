#include "runtime/startup.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <sstream>

#include "platform/folders.h"
#include "runtime/log.h"
#include "runtime/oops.h"
#include "runtime/product.h"
#include "runtime/thread.h"
#include "support/own_copy.h"

// One whole run, that prints what a case wants to know.
static void one_run() {
    char program[] = "program", lang[] = "--pref:_lang=1", shot[] = "--shot";
    char* argv[] = {program, lang, shot};
    runtime_start(3, argv);
    THREAD_make_workers();
    std::string temp;
    get_OS_abs_path(os_dir_temp, &temp);
    struct sigaction pipe_action {};
    sigaction(SIGPIPE, nullptr, &pipe_action);
    std::printf("%s\n%s\n%s\n", log_folder().c_str(), temp.c_str(),
                pipe_action.sa_handler == SIG_IGN ? "ignored" : "deadly");
    std::fflush(stdout);
    for (const int place : {1, 1, 2, 1})
        __MACIBM_alert(0, "alert", "", "", "", t_alert, "place", place);
    xer << "last " << 1.5 << "\n";
    MACIBM_finishup(1);
    xer << "after the end\n" << std::flush;
}
static const own_copy::job registered("one run", one_run);

struct told {
    std::string log_folder, temp_folder, pipe;
};
static told run_of(const own_copy& copy) {
    const own_copy::outcome outcome = copy.run("one run");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "alert \nalert \nalert \nalert \n");
    std::istringstream lines(outcome.out);
    std::string greeting;  // of the test library
    told what;
    for (std::string* text : {&greeting, &what.log_folder, &what.temp_folder, &what.pipe})
        EXPECT_TRUE(std::getline(lines, *text));
    return what;
}

TEST(StartUp, log_lies_beside_the_program_holds_one_run_and_ends_with_it) {
    const own_copy copy;
    copy.home.write("app/Log.txt", std::string(100000, 'o'));
    copy.home.write("app/MemoryLog.txt", "an earlier run\n");
    const told what = run_of(copy);
    EXPECT_EQ(what.log_folder, copy.app);
    EXPECT_EQ(what.pipe, "ignored");
    EXPECT_TRUE(what.temp_folder.starts_with(copy.home.path()) && !scratch::exists(what.temp_folder));

    const std::string log = scratch::read(copy.app + "Log.txt");
    EXPECT_EQ(log.find("log.txt for Velaris 9.00 Beta-19 Installer 90019 compiled on " + std::string(build_date) +
                       "\n\nThis log file is generated automatically by Tarvex applications"),
              0U);
    EXPECT_NE(log.find("\n\nOrbisuite folder:'', case sensitive=1\n\n     '--pref:_lang'='1'\n     '--shot'\n"
                       "CPU count        : "),
              std::string::npos)
        << log;
    EXPECT_TRUE(log.ends_with("\nlast 1.500000\nClean exit from threads.\n")) << log;

    // One report on memory for each place that raised an alert.
    const std::string memory = scratch::read(copy.app + "MemoryLog.txt");
    const std::string head = "dump_mem_stats: This is the dump_mem_stats call from the following code: if(type==t_exit";
    EXPECT_TRUE(memory.starts_with(head));
    const std::size_t second = memory.find(head, 1);
    ASSERT_NE(second, std::string::npos);
    EXPECT_EQ(memory.find(head, second + 1), std::string::npos);
}

TEST(StartUp, log_falls_back_to_the_state_folder_and_then_to_silence) {
    const own_copy copy;
    std::filesystem::create_directory(copy.app + "Log.txt");  // nothing can be written there, not even by root
    EXPECT_EQ(run_of(copy).log_folder, copy.state + "velaris/");
    std::filesystem::remove_all(copy.state);
    copy.home.write("state", "a file");
    EXPECT_EQ(run_of(copy).log_folder, "");
}
