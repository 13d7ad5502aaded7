#include "files/opensave.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/alerts.h"
#include "support/scratch.h"

typedef std::vector<std::string> texts;
typedef std::vector<int> numbers;

TEST(listing, sorted_by_bytes_with_kinds_and_without_hidden_items) {
    scratch box;
    for (const char* name : {"b", "a", "B", "ab", ".hidden", "x.Txt", "p.png", "\xc3\xa4", "z.dsf.bak", "txt"})
        box.write(name, "");
    for (const char* name : {"folder", "plane.ACF", ".git"})
        std::filesystem::create_directory(box / name);
    std::filesystem::create_symlink("folder", box / "link");
    texts names = {"left over"};
    numbers kinds = {9};
    EXPECT_EQ(opensave_getitems(box.path(), kind_any, names, kinds), 12);
    EXPECT_EQ(names, (texts{"B", "a", "ab", "b", "folder", "link", "p.png", "plane.ACF", "txt", "x.Txt", "z.dsf.bak",
                            "\xc3\xa4"}));
    EXPECT_EQ(kinds, (numbers{0, 0, 0, 0, 1, 0, 2, 3, 0, 19, 0, 0}));
    EXPECT_EQ(opensave_getitems(box.path(), kind_text, names, kinds), 2);
    EXPECT_EQ(names, (texts{"folder", "x.Txt"})) << "folders are always listed";
    EXPECT_EQ(opensave_getitems(box / "none/", kind_any, names, kinds), 0);
    alert_catcher alerts;
    EXPECT_THROW(opensave_getitems("/tmp", kind_any, names, kinds), left) << "a folder ends in its slash";
}

TEST(listing, given_names_and_commands) {
    texts names = {"one", "two/", ".three"};
    numbers kinds;
    EXPECT_EQ(opensave_getitems("any path", kind_as_given, names, kinds), 3);
    EXPECT_EQ(names, (texts{"one", "two", ".three"}));
    EXPECT_EQ(kinds, (numbers{0, 1, 0}));
    EXPECT_EQ(opensave_getitems("sim/", kind_commands, names, kinds), 1);
    EXPECT_EQ(names, texts{"operation"});
}
