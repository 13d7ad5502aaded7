#include "platform/folder_lock.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include "support/child.h"
#include "support/scratch.h"

using result = folder_lock_result;

// What another run gets, which ends then without giving anything back.
static result of_another_run(const std::string& path) {
    return static_cast<result>(in_child([&] {
        unlock_folder();  // the copy of our own lock
        return static_cast<int>(lock_folder(path));
    }));
}

TEST(FolderLock, keeps_other_runs_out_for_the_life_of_a_run_and_its_own_never) {
    const scratch a;
    EXPECT_EQ(of_another_run(a.path()), result::taken);
    // A reader of the folder who locks it keeps nobody out.
    const int outsider = open(a.path().c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(outsider, LOCK_SH), 0);
    EXPECT_EQ(lock_folder(a.path()), result::taken) << "the lock of a dead run stays";
    close(outsider);

    unlock_folder();
    EXPECT_EQ(lock_folder(a.path()), result::taken);
    EXPECT_EQ(lock_folder(a.path() + "./"), result::taken);
    EXPECT_EQ(of_another_run(a.path()), result::busy);
}

TEST(FolderLock, another_folder_gives_up_the_first_and_a_failure_keeps_it) {
    const scratch a, b;
    ASSERT_EQ(lock_folder(b.path()), result::taken);
    EXPECT_EQ(in_child([&] {
                  unlock_folder();
                  return lock_folder(a.path()) == result::taken && lock_folder(b.path()) == result::busy &&
                         lock_folder(a / "missing/") == result::no_folder && of_another_run(a.path()) == result::busy;
              }),
              1);
    EXPECT_EQ(lock_folder(a.path()), result::taken);
    EXPECT_EQ(of_another_run(b.path()), result::taken);
}
