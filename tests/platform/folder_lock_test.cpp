#include "platform/folder_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "support/scratch.h"

// Another run that tries to lock `path`. `holding` tells what it got; it keeps that until it is killed.
class other_run {
  public:
    explicit other_run(const std::string& path) {
        int report[2];
        if (pipe(report) != 0) return;
        child = fork();
        if (child == 0) {
            unlock_folder();  // the copy of our own lock
            const char result = static_cast<char>(lock_folder(path));
            if (write(report[1], &result, 1) != 1) _exit(1);
            for (;;)
                pause();
        }
        char result = 0;
        if (read(report[0], &result, 1) == 1) holding = static_cast<folder_lock_result>(result);
        close(report[0]);
        close(report[1]);
    }
    ~other_run() { kill_it(); }
    other_run(const other_run&) = delete;
    other_run& operator=(const other_run&) = delete;
    void kill_it() {
        if (child <= 0) return;
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        child = -1;
    }
    folder_lock_result holding = folder_lock_result::no_folder;

  private:
    pid_t child = -1;
};

class FolderLock : public testing::Test {
  protected:
    ~FolderLock() override { unlock_folder(); }
    scratch a, b;
};

TEST_F(FolderLock, a_second_run_is_turned_away_until_the_first_is_dead) {
    other_run first(a.path());
    ASSERT_EQ(first.holding, folder_lock_result::taken);
    EXPECT_EQ(lock_folder(a.path()), folder_lock_result::busy);
    first.kill_it();
    EXPECT_EQ(lock_folder(a.path()), folder_lock_result::taken);
}

TEST_F(FolderLock, a_reader_of_the_folder_who_locks_it_keeps_nobody_out) {
    const int outsider = open(a.path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(outsider, LOCK_SH), 0);
    EXPECT_EQ(lock_folder(a.path()), folder_lock_result::taken);
    close(outsider);
}

TEST_F(FolderLock, locking_the_same_folder_again_does_not_meet_our_own_lock) {
    ASSERT_EQ(lock_folder(a.path()), folder_lock_result::taken);
    EXPECT_EQ(lock_folder(a.path() + "./"), folder_lock_result::taken);
    EXPECT_EQ(other_run(a.path()).holding, folder_lock_result::busy);
}

TEST_F(FolderLock, another_folder_gives_up_the_first_and_a_failure_keeps_it) {
    ASSERT_EQ(lock_folder(a.path()), folder_lock_result::taken);
    {
        const other_run holder(b.path());
        EXPECT_EQ(lock_folder(b.path()), folder_lock_result::busy);
        EXPECT_EQ(lock_folder(a / "missing/"), folder_lock_result::no_folder);
        EXPECT_EQ(other_run(a.path()).holding, folder_lock_result::busy);
    }
    EXPECT_EQ(lock_folder(b.path()), folder_lock_result::taken);
    EXPECT_EQ(other_run(a.path()).holding, folder_lock_result::taken);
}
