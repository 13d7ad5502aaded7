// The folder dialog's helper is another program: whatever it answers, only a usable folder counts as a choice.
#include "platform/folder_dialog.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "support/scratch.h"

namespace {

class FolderDialog : public ::testing::Test {
  protected:
    FolderDialog() { setenv("PATH", (programs.path() + ":/nowhere").c_str(), 1); }
    void helper(const char* name, const std::string& body) {
        const std::string path = programs.write(name, "#!/bin/sh\n" + body + "\n");
        ASSERT_EQ(chmod(path.c_str(), 0755), 0);
    }
    folder_dialog_result ask() { return run_folder_dialog("Pick $(one); \"now\"", "/start/", chosen, nullptr); }

    scratch programs;
    std::string chosen = "untouched";
};

TEST_F(FolderDialog, TheTextsReachAHelperWithoutAShellAndTheChoiceLosesItsSlash) {
    EXPECT_FALSE(folder_dialog_available());
    EXPECT_EQ(ask(), folder_dialog_result::no_helper);
    helper("kdialog", "[ \"$2\" = 'Pick $(one); \"now\"' ] && [ \"$4\" = /start/ ] && echo '/home/a b/'");
    EXPECT_TRUE(folder_dialog_available());
    EXPECT_EQ(ask(), folder_dialog_result::chosen);
    EXPECT_EQ(chosen, "/home/a b");
    helper("zenity", "echo /");  // preferred where both are there
    EXPECT_EQ(ask(), folder_dialog_result::chosen);
    EXPECT_EQ(chosen, "/");
}

TEST_F(FolderDialog, EverythingElseIsACancel) {
    for (const char* body : {"exit 1", "echo /x; exit 1", "true", "echo relative", "echo /a:b", "printf '%s' '/a\\b'",
                             "printf '/a\\nb\\n'", "kill -9 $$"}) {
        helper("zenity", body);
        EXPECT_EQ(ask(), folder_dialog_result::cancelled) << body;
        EXPECT_EQ(chosen, "untouched") << body;
    }
}

}  // namespace
