#include "runtime/startup.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <filesystem>

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
    std::printf("log %s\ntemp %s\npipe %s\n", log_folder().c_str(), temp.c_str(),
                pipe_action.sa_handler == SIG_IGN ? "ignored" : "deadly");
    std::fflush(stdout);
    xer << "last " << 1.5 << "\n";
    MACIBM_finishup(1);
    xer << "after the end\n" << std::flush;
}
static const own_copy::job registered("one run", one_run);

class StartUp : public testing::Test {
  protected:
    std::string app() const { return copy.app; }
    std::string state() const { return copy.state; }
    std::string run() {
        const own_copy::outcome outcome = copy.run("one run");
        EXPECT_EQ(outcome.status, 0);
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }

    own_copy copy;
    const scratch& home = copy.home;
};

static std::string value_of(const std::string& printed, const std::string& key) {
    const std::size_t from = printed.find(key + " ");
    if (from == std::string::npos) return "missing in: " + printed;
    const std::size_t value = from + key.size() + 1;
    return printed.substr(value, printed.find('\n', from) - value);
}

TEST_F(StartUp, log_lies_beside_the_program_holds_one_run_and_ends_with_it) {
    home.write("app/Log.txt", std::string(100000, 'o'));
    const std::string printed = run();
    EXPECT_EQ(value_of(printed, "log"), app());
    EXPECT_EQ(value_of(printed, "pipe"), "ignored");
    EXPECT_FALSE(scratch::exists(value_of(printed, "temp"))) << printed;

    const std::string log = scratch::read(app() + "Log.txt");
    EXPECT_EQ(log.find("log.txt for Velaris 9.00 Beta-19 Installer 90019 compiled on " + std::string(build_date) +
                       "\n\nThis log file is generated automatically by Tarvex applications"),
              0U);
    EXPECT_NE(log.find("\n\nOrbisuite folder:'', case sensitive=1\n\n     '--pref:_lang'='1'\n     '--shot'\n"
                       "CPU count        : "),
              std::string::npos)
        << log;
    EXPECT_TRUE(log.ends_with("\nlast 1.500000\nClean exit from threads.\n")) << log;
}

TEST_F(StartUp, log_falls_back_to_the_state_folder_and_then_to_silence) {
    std::filesystem::create_directory(app() + "Log.txt");  // nothing can be written there, not even by root
    EXPECT_EQ(value_of(run(), "log"), state() + "velaris/");
    std::filesystem::remove_all(state());
    home.write("state", "a file");
    EXPECT_EQ(value_of(run(), "log"), "");
}
