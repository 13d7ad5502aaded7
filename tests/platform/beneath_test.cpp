// File work below a folder: nothing reaches what lies outside, by whatever way, with and without the kernel's help.
#include "platform/beneath.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "support/scratch.h"

namespace {

class Beneath : public ::testing::TestWithParam<bool> {
  protected:
    Beneath() {
        beneath_without_kernel = GetParam();
        disk.write("outside/precious", "mine");
        disk.write("root/in/file", "ours");
        link("../outside", "root/out");
        link(disk / "outside", "root/absolute");
        link("in", "root/inside");
        link("inside/../in", "root/round");
        link("../root/in", "root/out and back");
        link("loop", "root/loop");
    }
    void link(const std::string& target, const std::string& name) const {
        static_cast<void>(symlink(target.c_str(), (disk / name).c_str()));
    }
    // Every kind of work on a path, told by its result.
    static int worst_of_all(const beneath_folder& root, const std::string& path) {
        struct stat facts;
        int made = -1;
        const int results[] = {
            root.make_file(path, 0666, made), root.make_folder(path, 0755), root.make_link("x", path),
            root.remove_file(path),           root.remove_folder(path),     root.rename(path, "in/moved"),
            root.rename("in/file", path),     root.look(path, facts),       root.change_mode(path, 0777)};
        for (const int result : results)
            if (result != EXDEV) return result;
        return EXDEV;
    }

    scratch disk;
};

TEST_P(Beneath, NoPathLeavesTheFolder) {
    const beneath_folder root(disk / "root");
    ASSERT_EQ(root.error(), 0);
    for (const std::string path : {"../outside/precious", "/tmp/x", "in/../../outside/precious", "in//file",
                                   "./in/file", "in/", "", "out/precious", "absolute/precious", "out and back/file"})
        EXPECT_EQ(worst_of_all(root, path), EXDEV) << path;
    EXPECT_EQ(beneath_folder(root, "out").error(), EXDEV);
    EXPECT_EQ(scratch::read(disk / "outside/precious"), "mine");
    EXPECT_EQ(scratch::read(disk / "root/in/file"), "ours");
}

TEST_P(Beneath, LinksThatStayInsideAreFollowedAndTheLastOneNever) {
    const beneath_folder root(disk / "root");
    struct stat facts;
    EXPECT_EQ(root.look("inside/file", facts), 0);
    EXPECT_EQ(root.look("round/file", facts), 0);
    EXPECT_EQ(root.look("out", facts), 0);
    EXPECT_TRUE(S_ISLNK(facts.st_mode));
    EXPECT_EQ(root.look("loop/file", facts), ELOOP);
    EXPECT_EQ(root.look("in/file/deeper", facts), ENOTDIR);
    EXPECT_EQ(root.look("none/file", facts), ENOENT);
    EXPECT_EQ(root.change_mode("out", 0777), ELOOP);
    EXPECT_EQ(root.remove_file("out"), 0);
    EXPECT_TRUE(scratch::exists(disk / "outside/precious"));
}

TEST_P(Beneath, FilesAndFoldersAreMadeMovedAndRemoved) {
    const beneath_folder root(disk / "root");
    int made = -1;
    EXPECT_EQ(root.make_folder("in/new", 0755), 0);
    ASSERT_EQ(root.make_file("in/new/file", 0644, made), 0);
    close(made);
    EXPECT_EQ(root.make_file("in/new/file", 0644, made), EEXIST);
    EXPECT_EQ(root.rename("in/new/file", "inside/there"), 0);
    EXPECT_TRUE(scratch::exists(disk / "root/in/there"));
    EXPECT_EQ(root.make_link("anywhere/../..", "in/link"), 0) << "what a link says is its own affair";
    EXPECT_EQ(root.remove_folder("in/new"), 0);
    EXPECT_EQ(root.remove_folder("in"), ENOTEMPTY);
    const beneath_folder below(root, "round");
    EXPECT_EQ(below.remove_file("there"), 0);
    EXPECT_EQ(beneath_folder(disk / "none").remove_file("x"), ENOENT);
}

INSTANTIATE_TEST_SUITE_P(ByKernelAndByHand, Beneath, ::testing::Bool());

}  // namespace
