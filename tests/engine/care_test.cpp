// What is the user's own: nothing of it is lost, and nothing is asked about that is not.
#include <sys/stat.h>

#include <filesystem>
#include <set>

#include "release.h"

class care : public release {
  protected:
    void write_now(const std::string& name, const std::string& content) const {
        unlink((dest_dir_path + name).c_str());
        disk.write("dest/" + name, content);
    }
    // The copies that were kept in a folder of the destination, without their day, and what is in them.
    std::string kept_in(const std::string& folder) const {
        std::set<std::string> copies;
        for (const auto& item : std::filesystem::directory_iterator(dest_dir_path + folder)) {
            const std::string name = item.path().filename();
            const std::size_t mark = name.find("(mine ");
            if (mark != std::string::npos)
                copies.insert(name.substr(0, mark) + "|" + name.substr(mark + 17) + "=" + scratch::read(item.path()));
        }
        std::string all;
        for (const std::string& copy : copies)
            all += copy + ";";
        return all;
    }
};

TEST_F(care, what_cannot_be_read_is_asked_about_and_never_opened) {
    open_mirror();
    for (const char* name : {"pipe", "kept", "loop/f"})
        shipped(std::string("All/") + name, "new");
    history("All/gone", {"1", "GONE"});
    for (const char* name : {"pipe", "kept", "gone"})
        ASSERT_EQ(mkfifo((dest_dir_path + name).c_str(), 0644), 0);
    put_link("loop", "loop");
    answers = {1, 2, 2, 2};
    prepare();
    const std::string odd = "It is a pipe, a socket or a device, and no file";
    EXPECT_EQ(questions, "pipe" + odd + ";kept" + odd + ";loop/fToo many links lead to one another;gone-" + odd + ";");
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(on_disk({"pipe"}), "new");
    struct stat facts;
    for (const char* name : {"kept", "gone"})
        EXPECT_TRUE(lstat((dest_dir_path + name).c_str(), &facts) == 0 && S_ISFIFO(facts.st_mode)) << name;
}

TEST_F(care, a_destination_that_is_not_there_yet_asks_for_nothing) {
    open_mirror();
    shipped("All/f", "new");
    dest_dir_path = disk / "not/yet/";
    prepare();
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(on_disk({"f"}) + questions, "new");
}

TEST_F(care, what_changes_between_scan_and_replacement_is_decided_anew) {
    open_mirror();
    const struct {
        const char *before, *after;  // at the scan and right before the replacement; null: nothing there
        bool withdrawn;
        int answer;
        const char *questions, *content;
    } cases[] = {
        {"old", "mine", false, 2, "f;", "mine"},   {"old", "mine", false, 1, "f;", "new"},
        {nullptr, "mine", false, 2, "f;", "mine"}, {nullptr, "new", false, 2, "", "new"},
        {"old", "older", false, 2, "", "new"},     {"old", nullptr, false, 2, "", "new"},
        {"old", "mine", true, 2, "f-;", "mine"},   {"old", "mine", true, 1, "f-;", ""},
        {"old", "older", true, 2, "", ""},         {"old", nullptr, true, 2, "", ""},
        {"old", "mine", false, 3, "f;", "mine"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.before ? c.before : "-") + (c.after ? c.after : "-") + std::to_string(c.answer));
        catalogue = questions = "";
        unlink((dest_dir_path + "f").c_str());
        if (c.before) put({{"f", c.before}});
        history("All/f", {"older", "old"});
        if (c.withdrawn)
            row("All/f", "GONE");
        else
            shipped("All/f", "new");
        prepare();
        unlink((dest_dir_path + "f").c_str());
        if (c.after) put({{"f", c.after}});
        answers = {c.answer};
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(questions, c.questions);
        EXPECT_EQ(on_disk({"f"}), c.content);
        EXPECT_EQ(next.cancelled, c.answer == 3);
        EXPECT_FALSE(is_there(".velaris.part.0"));
    }
}

TEST_F(care, a_copy_of_the_users_version_is_kept_beside) {
    open_mirror();
    const std::string long_name(250, 'x');
    put({{"a/List.txt", "mine"}, {"a/.hidden", "mine"}, {"a/gone.d.png", "mine"}, {long_name.c_str(), "mine"}});
    for (const std::string& name : {std::string("a/List.txt"), std::string("a/.hidden"), long_name})
        shipped("All/" + name, "new");
    history("All/a/gone.d.png", {"1", "GONE"});
    for (const int round : {1, 2}) {
        answers = {6, 6, 6, 6};
        prepare();
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(on_disk({"a/List.txt", "a/.hidden"}), "newnew");
        if (round == 1) put({{"a/List.txt", "mine too"}});
    }
    EXPECT_EQ(kept_in("a"), ".hidden |=mine;List | 2.txt=mine too;List |.txt=mine;gone.d |.png=mine;");
    EXPECT_EQ(kept_in(""), std::string(237, 'x') + " |=mine;") << "cut, so that the disk takes it";
    EXPECT_EQ(questions, "a/List.txt;a/.hidden;" + long_name + ";a/gone.d.png-;a/List.txt;");
    EXPECT_FALSE(is_there("a/gone.d.png"));
}

TEST_F(care, only_folders_that_a_run_emptied_are_swept) {
    open_mirror();
    put({{"Output/logbooks/f", "1"}, {"old/.velaris.part.3", "half a file"}, {"deep/er/f", "1"}});
    for (const char* folder : {"old", "users", "users/own"})
        mkdir((dest_dir_path + folder).c_str(), 0755);
    for (const char* name : {"old/f", "Output/logbooks/f", "users/own/f", "deep/er/f"})
        history(std::string("All/") + name, {"1", "GONE"});
    put({{".velaris.emptied", "old/f\n../outside\n"}});  // of a run that was killed
    prepare();
    EXPECT_EQ(run(), 1);
    EXPECT_FALSE(is_there("old") || is_there("deep") || is_there(".velaris.emptied"));
    EXPECT_TRUE(is_folder("Output/logbooks")) << "every install makes it";
    EXPECT_TRUE(is_folder("users/own")) << "the user's own, empty as it is";
}

TEST_F(care, two_paths_to_one_file_are_one_file) {
    open_mirror();
    put({{"now/f", "old"}, {"now/same", "1"}, {"twin", "1"}});
    put_link("Before", "now");  // as on a disk where upper and lower case are the same
    ASSERT_EQ(link((dest_dir_path + "twin").c_str(), (dest_dir_path + "other name").c_str()), 0);
    history("All/Before/f", {"old", "GONE"});
    history("All/Before/same", {"1", "GONE"});
    shipped("All/now/f", "new");
    shipped("All/now/same", "1");
    shipped("All/twin", "1");
    history("All/other name", {"1", "GONE"});  // a hard link is a name of its own
    for (const int round : {1, 2}) {
        prepare();
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(on_disk({"now/f", "now/same", "twin"}), "new11") << round;
        EXPECT_FALSE(is_there("other name"));
        EXPECT_EQ(requests, round == 1 ? "/r/All/now/f.zip;" : "");
    }
    EXPECT_EQ(questions, "");
}

TEST_F(care, a_destination_that_is_swapped_for_a_link_leads_nowhere_else) {
    open_mirror();
    put({{"gone", "1"}});
    disk.write("outside/gone", "1");
    shipped("All/a/f", "new");
    history("All/gone", {"1", "GONE"});
    stg.dir_state = read();
    flow_install();
    ASSERT_EQ(rename((disk / "dest").c_str(), (disk / "moved").c_str()), 0);
    ASSERT_EQ(symlink("outside", (disk / "dest").c_str()), 0);
    EXPECT_TRUE(poll_until([] {
        flow_file_work_once();
        return stg.install_state == install_over;
    }));
    EXPECT_EQ(scratch::read(disk / "moved/a/f") + scratch::read(disk / "outside/gone"), "new1");
    EXPECT_FALSE(scratch::exists(disk / "moved/gone") || scratch::exists(disk / "outside/a"));
}

TEST_F(care, only_a_folder_that_is_a_copy_and_nothing_else_gets_the_name_of_the_release) {
    setenv("HOME", (disk / "home").c_str(), 1);
    setenv("XDG_CONFIG_HOME", (disk / "config").c_str(), 1);
    disk.write("config/user-dirs.dirs", "XDG_MUSIC_DIR=\"$HOME/Songs\"\n");
    static int saved;
    saved = 0;
    alert_front.save_settings = [] { ++saved; };
    const struct {
        const char *folder, *before, *name;  // the destination, what stands in it, the name of the release
        bool renamed;
    } cases[] = {
        {"fresh", nullptr, "New", true},
        {"copy", "f", "New", true},
        {"copy 2", "f", "a:b", false},
        {"copy 3", "f", "a\\b", false},
        {"copy 4", "f", "..", false},
        {"others", "letter.txt", "New", false},
        {"hidden", ".letter", "New", false},
        {"home", nullptr, "New", false},
        {"home/Documents", nullptr, "New", false},
        {"home/Songs", nullptr, "New", false},
    };
    open_mirror();
    shipped("All/f", "1");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.folder);
        for (int time = 0; time < 2; ++time) {  // the second run finds a copy there in any case
            dest_dir_path = disk / c.folder + "/";
            if (c.before) disk.write(std::string(c.folder) + "/" + c.before, "1");
            disk.write(std::string(c.folder) + "/.velaris.part.0", "of a killed run");
            questions = "";
            stg.install_state = install_idle;
            server_list.install_name = c.name;
            stg.dir_state = read();
            this_install_has_exes = 1;
            flow_install();
            EXPECT_TRUE(poll_until([] {
                flow_file_work_once();
                return stg.install_state == install_over;
            }));
            EXPECT_EQ(dest_dir_path != disk / c.folder + "/", c.renamed);
            EXPECT_EQ(questions, c.renamed ? "renamed;" : "");
            std::filesystem::remove_all(disk / "New");
        }
    }
    EXPECT_EQ(saved, 4);
}
