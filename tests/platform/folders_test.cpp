#include "platform/folders.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "platform/volume.h"
#include "support/scratch.h"

static std::string folder(int which) {
    std::string path = "untouched";
    get_OS_abs_path(which, &path);
    return path;
}

static unsigned mode_of(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777U : ~0U;
}

// A user whose home is a private folder and whose environment says nothing else.
class Folders : public testing::Test {
  protected:
    Folders() {
        for (const char* name : {"XDG_CONFIG_HOME", "XDG_STATE_HOME", "TMPDIR"})
            unsetenv(name);
        setenv("HOME", home.path().c_str(), 1);
    }
    ~Folders() override { remove_temp_folder(); }
    scratch home;
};

TEST_F(Folders, own_folder_follows_the_executable_and_not_the_current_folder) {
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_TRUE(scratch::exists(folder(os_dir_this_app) + "platform_tests"));
}

TEST_F(Folders, home_without_a_usable_HOME_comes_from_the_password_entry) {
    setenv("HOME", "/ho:me/a\\b", 1);
    EXPECT_EQ(folder(os_dir_default_apps), "/ho/me/a/b/");  // no separator of another system is left
    const std::string listed = getpwuid(getuid())->pw_dir;
    for (const char* unusable : {"", "relative/home"}) {
        setenv("HOME", unusable, 1);
        EXPECT_EQ(home_folder(), listed + (listed.back() == '/' ? "" : "/"));
    }
}

TEST_F(Folders, preferences_and_state_are_made_private_with_all_that_leads_there) {
    EXPECT_EQ(folder(os_dir_prefs), home / ".config/velaris/");
    EXPECT_EQ(mode_of(home / ".config/velaris"), 0700U);
    EXPECT_EQ(state_folder(), home / ".local/state/velaris/");

    setenv("XDG_CONFIG_HOME", "relative", 1);  // would move with the current folder
    EXPECT_EQ(folder(os_dir_prefs), home / ".config/velaris/");
    const std::string file = home.write("file", "");
    setenv("XDG_CONFIG_HOME", file.c_str(), 1);
    setenv("XDG_STATE_HOME", file.c_str(), 1);
    EXPECT_EQ(folder(os_dir_prefs), "untouched");
    EXPECT_EQ(state_folder(), "");
}

TEST_F(Folders, desktop_is_the_one_that_the_user_has_set) {
    EXPECT_EQ(folder(os_dir_desktop), home / "Desktop/");
    home.write(".config/user-dirs.dirs",
               "# XDG_DESKTOP_DIR=\"/wrong\"\nXDG_DESKTOP_DIR=\"$HOME/Schreib \\\"tisch\"\nXDG_MUSIC_DIR=\"/m\"\n");
    EXPECT_EQ(folder(os_dir_desktop), home / "Schreib \"tisch/");
    home.write(".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"not/absolute\"\n");
    EXPECT_EQ(folder(os_dir_desktop), home / "Desktop/");
}

TEST_F(Folders, temporary_folder_is_private_can_be_reached_and_is_the_same_all_through_a_run) {
    home.write("a:b/keep", "");
    for (const std::string& parent : {home.path(), home / "a:b", home / "missing", std::string("relative")}) {
        setenv("TMPDIR", parent.c_str(), 1);
        const std::string temp = folder(os_dir_temp);
        EXPECT_EQ(temp.starts_with(home.path()), parent == home.path()) << temp;
        EXPECT_EQ(mode_of(temp), 0700U);
        EXPECT_EQ(temp_folder_refused(), parent == home.path() ? "" : parent) << "who asked for it is told";
        setenv("TMPDIR", "/elsewhere", 1);
        EXPECT_EQ(folder(os_dir_temp), temp);
        remove_temp_folder();
    }
    const std::string file = home.write("file", "") + "/";
    system_temp_folder = file.c_str();
    EXPECT_EQ(folder(os_dir_temp), "untouched") << "never anywhere else";
}

TEST_F(Folders, what_a_killed_run_left_goes_and_what_lives_or_is_not_ours_stays) {
    setenv("TMPDIR", home.path().c_str(), 1);
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const auto start_run = [&](const std::string& file) {
        const pid_t run = fork();
        if (run != 0) return run;
        home.write(folder(os_dir_temp).substr(home.path().size()) + file, "half");
        if (write(ready[1], "", 1) == 1) pause();
        _exit(0);
    };
    const pid_t killed = start_run("0.zip"), living = start_run("1.zip");
    char byte[2];
    ASSERT_EQ(read(ready[0], byte, 1) + read(ready[0], byte, 1), 2);
    kill(killed, SIGKILL);
    waitpid(killed, nullptr, 0);
    home.write("velaris-open00/2.zip", "");
    // Named like ours and empty but for names of ours: without our marker it is somebody else's.
    for (const std::string name : {"elsewhere/3.zip", "velaris-mine00/letter.txt", "velaris-work00/directory.txt"}) {
        home.write(name, "");
        chmod((home / name.substr(0, name.find('/'))).c_str(), 0700);
    }
    ASSERT_EQ(symlink("elsewhere", (home / "velaris-link00").c_str()), 0);

    folder(os_dir_temp);
    std::set<std::string> left;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path()))
        if (!entry.is_directory()) left.insert(entry.path().filename());
    EXPECT_EQ(left, (std::set<std::string>{"1.zip", "2.zip", "3.zip", "letter.txt", "directory.txt", temp_marker}));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home.path()), {}), 7);
    kill(living, SIGKILL);
    waitpid(living, nullptr, 0);

    // Our own goes in the same way, but for what is not ours.
    const std::string own = folder(os_dir_temp).substr(home.path().size());
    home.write(own + "directory.txt", "");
    home.write(own + "mine.txt", "");
    remove_temp_folder();
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(home / own), {}), 1);
}

TEST_F(Folders, only_a_folder_counts_as_writable_or_has_free_space) {
    EXPECT_TRUE(folder_is_writable(home.path()));
    EXPECT_FALSE(folder_is_writable(home.write("file", "")));
    EXPECT_FALSE(folder_is_writable(home / "missing"));

    std::uint64_t bytes = 7;
    EXPECT_FALSE(volume_free_bytes(home / "missing/", bytes));
    EXPECT_EQ(bytes, 7U);
    EXPECT_TRUE(volume_free_bytes(home.path(), bytes));
    EXPECT_GT(bytes, 7U);
}
