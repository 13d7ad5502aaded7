#include "support/own_copy.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

static const char variable[] = "VELARIS_TEST_JOB";

namespace {
class job_instead_of_tests : public testing::Environment {
  public:
    job_instead_of_tests(std::string n, void (*a)()) : name(std::move(n)), act(a) {}
    void SetUp() override {
        const char* const wanted = std::getenv(variable);
        if (!wanted || name != wanted) return;
        act();
        std::exit(0);
    }

  private:
    const std::string name;
    void (*const act)();
};
}  // namespace

own_copy::job::job(const char* name, void (*act)()) {
    testing::AddGlobalTestEnvironment(new job_instead_of_tests(name, act));
}

own_copy::own_copy() {
    std::filesystem::create_directory(app);
    std::filesystem::copy_file("/proc/self/exe", app + "program");
}

own_copy::outcome own_copy::run(const std::string& job_name) const {
    const std::string out = home / "out", err = home / "err";
    const pid_t child = fork();
    if (child == 0) {
        const rlimit none{0, 0};
        setrlimit(RLIMIT_CORE, &none);
        dup2(open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
        dup2(open(err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
        setenv(variable, job_name.c_str(), 1);
        setenv("XDG_STATE_HOME", state.c_str(), 1);
        setenv("TMPDIR", home.path().c_str(), 1);
        execl((app + "program").c_str(), "program", "--gtest_brief=1", nullptr);
        _exit(127);
    }
    outcome result{-1, "", ""};
    waitpid(child, &result.status, 0);
    result.out = scratch::read(out);
    result.err = scratch::read(err);
    return result;
}
