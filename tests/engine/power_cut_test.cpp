// The power fails at every moment of an update in turn: what the disk was not told to keep is torn, and the next run
// must end with the release and ask about nothing. The calls that change the disk are stood in for, so that a moment is
// one of them.
#include <dlfcn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "release.h"

namespace {

struct {
    int calls_left = -1;  // until the power fails; -1: it does not
    std::string folder;
    std::set<ino_t> safe;  // whose bytes are on the disk
    std::string report;    // where they are told
} disk_state;

template <class function>
function real(const char* name, function) {
    return reinterpret_cast<function>(dlsym(RTLD_NEXT, name));
}

void moment() {
    if (disk_state.calls_left == 0) {
        std::ofstream report(disk_state.report);
        for (const ino_t inode : disk_state.safe)
            report << inode << '\n';
        report.close();
        _exit(9);
    }
    if (disk_state.calls_left > 0) --disk_state.calls_left;
}

void for_each_file(const std::function<void(const std::string&, const struct stat&)>& act) {
    if (disk_state.folder.empty()) return;
    for (const auto& item : std::filesystem::recursive_directory_iterator(disk_state.folder)) {
        struct stat facts;
        if (lstat(item.path().c_str(), &facts) == 0 && S_ISREG(facts.st_mode)) act(item.path(), facts);
    }
}

void keep_what_is_there() {
    for_each_file([](const std::string&, const struct stat& facts) { disk_state.safe.insert(facts.st_ino); });
}

}  // namespace

extern "C" int syncfs(int fd) noexcept {
    moment();
    keep_what_is_there();
    return disk_state.calls_left < 0 ? real("syncfs", &syncfs)(fd) : 0;
}
extern "C" int renameat(int from_at, const char* from, int at, const char* to) noexcept {
    moment();
    return real("renameat", &renameat)(from_at, from, at, to);
}
extern "C" int unlinkat(int at, const char* name, int flags) noexcept {
    moment();
    return real("unlinkat", &unlinkat)(at, name, flags);
}

class power : public release {
  protected:
    // The run goes in a process of its own, whose end is the power's. False once it came to its own end.
    bool run_until_cut(int moments) {
        const pid_t child = fork();
        if (child == 0) {
            disk_state.calls_left = moments;
            run();
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        if (WEXITSTATUS(status) == 0) return false;
        disk_state.safe.clear();
        std::ifstream report(disk_state.report);
        for (ino_t inode; report >> inode;)
            disk_state.safe.insert(inode);
        return true;
    }
};

TEST_F(power, fails_at_every_moment_and_the_next_run_mends_it_without_a_question) {
    open_mirror();
    for (const char* name : {"a/1", "a/2", "b/c/3"}) {
        row(std::string("All/") + name, "old");
        shipped(std::string("All/") + name, std::string(5000, name[0]));
    }
    shipped("All/fresh", "new");
    shipped("All/link", "a/1", true);
    history("All/gone/f", {"1", "GONE"});
    disk_state.folder = dest_dir_path;
    disk_state.report = disk / "safe";
    int moments = 0;
    for (bool cut = true; cut; ++moments) {
        std::filesystem::remove_all(dest_dir_path);
        put({{"a/1", "old"}, {"a/2", "old"}, {"b/c/3", "old"}, {"gone/f", "1"}, {"a/own", "mine"}});
        mkdir((dest_dir_path + "empty").c_str(), 0755);
        disk_state.safe.clear();
        keep_what_is_there();
        prepare();
        cut = run_until_cut(moments);
        for_each_file([&](const std::string& path, const struct stat& facts) {
            const bool torn = cut && !disk_state.safe.contains(facts.st_ino);
            ASSERT_EQ(torn ? truncate(path.c_str(), facts.st_size / 2 * (moments % 2)) : 0, 0);
        });
        prepare();
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(questions, "") << moments;
        EXPECT_EQ(read(), 3);
        EXPECT_EQ(stg.down_size, 0) << moments;
        EXPECT_EQ(on_disk({"fresh", "a/own"}), "newmine");
        EXPECT_FALSE(is_there("gone")) << moments;
        EXPECT_TRUE(is_folder("empty"));
        for_each_file([](const std::string& path, const struct stat&) {
            EXPECT_EQ(path.find("/.velaris"), std::string::npos) << path;
        });
    }
    EXPECT_GT(moments, 15);
}
