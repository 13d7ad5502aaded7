#include "engine/dirs.h"

#include "engine/choose.h"
#include "release.h"

class dirs : public release {};

TEST_F(dirs, the_road_the_wanted_folders_and_room_for_the_links_are_made) {
    const std::string one = "Resources/plugins/QRNK.framework/", two = "Resources/plugins/Panelkit.framework/";
    dest_dir_path = disk / "one/two/three/";
    row("All/a/b c/f", "1");
    row("All/top", "1");
    row("All/gone/f", "GONE");
    row("Macintosh/mac/f", "1", 1);
    read();
    make_dirs();
    disk.write("one/two/three/" + one + "Versions/Current/x", "1");
    disk.write("one/two/three/" + one + "Resources", "file");
    disk.write("one/two/three/" + two + "Versions/A/x", "1");
    put_link(two + "Versions/Current", "nowhere");
    make_dirs();
    EXPECT_EQ(alerts.last(), "");
    EXPECT_TRUE(contested_paths().empty());
    for (const char* name : {"a/b c", "Output/FMS plans", "Output/logbooks", "Output/movies", "Output/situations",
                             "Resources/preferences"})
        EXPECT_TRUE(is_folder(name)) << name;
    for (const std::string& name :
         {std::string("top"), std::string("gone"), std::string("mac"), one + "Resources", one + "Versions/Current"})
        EXPECT_FALSE(is_there(name)) << name;
    EXPECT_TRUE(is_there(one + "_Resources") && is_there(one + "Versions/_Current/x"));
    EXPECT_TRUE(is_link(two + "Versions/Current"));
}

TEST_F(dirs, a_destination_that_cannot_be_made_is_told_once_and_ends_the_install) {
    disk.write("file", "");
    dest_dir_path = disk / "file/sub/dest/";
    row("All/a/b/f", "1");
    stg.dir_state = read();
    flow_install();
    EXPECT_EQ(stg.install_state, install_over);
    EXPECT_EQ(stg.install_failed, 1);
    EXPECT_EQ(questions, "") << "neither the agreement nor a file was asked about";
    ASSERT_EQ(alerts.count(), 1U);
    EXPECT_EQ(alerts.seen[0].line4, "Install Path:" + (disk / "file/sub"));
    EXPECT_EQ(alerts.seen[0].line2 + alerts.seen[0].line3, "Error: Not a directoryInstall Location: " + dest_dir_path);
}

TEST_F(dirs, a_withdrawn_file_in_the_place_of_a_folder_goes_only_once_the_way_is_cleared) {
    put({{"known", "old"}, {"kept", "mine"}, {"deleted", "mine"}, {"both", "now"}, {"other", "win"}});
    for (const std::string name : {"known", "kept", "deleted"}) {
        history("All/" + name + "/in/f", {"1"});
        history("All/" + name, {"old", "GONE"});
    }
    history("All/both", {"now"});  // a release that wants a file and a folder of one name gets the file
    history("All/both/f", {"1"});
    history("Linux/other/f", {"1"}, 3);
    history("Windows/other", {"win"}, 2);  // from the time when the user installed for another system
    read();
    make_dirs();
    EXPECT_EQ(on_disk({"known", "kept", "deleted", "both", "other"}) + alerts.last(), "oldmineminenowwin");
    answers = {2, 1};
    choose_files();
    EXPECT_EQ(clear_the_way(), 1);
    EXPECT_EQ(questions, "kept-;deleted-;");
    EXPECT_TRUE(is_folder("known/in") && is_folder("deleted/in") && is_folder("other"));
    EXPECT_EQ(on_disk({"kept", "both"}), "minenow");
    ASSERT_EQ(alerts.count(), 2U);
    EXPECT_EQ(alerts.seen[1].line4, "Install Path:" + dest_dir_path + "kept");
    EXPECT_EQ(sim_info[1].back().do_delete, 0);
}

TEST_F(dirs, a_link_in_the_place_of_a_folder_goes_and_what_it_led_to_stays) {
    put({{"A/f", "1"}, {"A/g", "1"}});
    for (const char* link : {"link", "changed", "mine"})
        put_link(link, "A");
    row("Windows/mine", "1", 2);  // the user's own link serves as a folder
    row("Linux/mine/sub/f", "1", 3);
    for (const std::string link : {"All/link", "All/changed"}) {
        history(link, {link == "All/link" ? "A" : "B", "GONE"});
        history(link + "/f", {"1"});
        history(link + "/g", {"1", "GONE"});
    }
    read();
    make_dirs();
    answers = {1};
    choose_files();
    ASSERT_EQ(clear_the_way(), 1);
    for (std::size_t file : {3U, 6U})
        EXPECT_TRUE(sim_info[file].back().do_fetch && !sim_info[file + 1].back().do_delete) << file;
    EXPECT_FALSE(is_link("link") || is_link("changed"));
    EXPECT_TRUE(is_folder("link") && is_folder("changed") && is_folder("A/sub"));
    EXPECT_EQ(on_disk({"A/f", "A/g"}) + alerts.last() + questions, "11changed-;");
}

TEST_F(dirs, a_folder_in_the_place_of_a_file_goes_if_it_holds_only_what_was_withdrawn) {
    put({{"folder/sub/f", "1"}, {"taken/.hidden", "mine"}, {"empty/f", ""}});
    unlink((dest_dir_path + "empty/f").c_str());
    history("All/folder", {"1"});
    history("All/folder/sub/f", {"1", "GONE"});
    history("All/empty", {"1"});
    history("All/taken", {"1"});
    read();
    make_dirs();
    choose_files();
    EXPECT_EQ(clear_the_way(), 0);
    EXPECT_EQ(alerts.seen.back().line4, dest_dir_path + "taken");
    EXPECT_EQ(on_disk({"folder/sub/f", "taken/.hidden"}), "1mine");
    unlink((dest_dir_path + "taken/.hidden").c_str());
    EXPECT_EQ(clear_the_way(), 1);
    EXPECT_FALSE(is_there("folder") || is_there("empty") || is_there("taken"));
    EXPECT_EQ(alerts.count(), 1U) << alerts.last();
}

TEST_F(dirs, a_folder_that_is_a_link_leading_out_is_named_and_nothing_is_touched) {
    disk.write("outside/old", "1");
    put({{"keep/f", "1"}});
    put_link("scenery", "../outside");
    put_link("inside", "keep");
    history("All/scenery/old", {"1", "GONE"});
    history("All/scenery/new/f", {"1"});
    history("All/inside/f", {"1", "2"});
    read();
    make_dirs();
    choose_files();
    EXPECT_EQ(alerts.last(), "");
    EXPECT_EQ(clear_the_way(), 0);
    EXPECT_EQ(alerts.seen.back().line4, dest_dir_path + "scenery");
    EXPECT_EQ(scratch::read(disk / "outside/old"), "1");
    EXPECT_FALSE(scratch::exists(disk / "outside/new"));
    // The user's own link to another folder of the copy is none of our business.
    sim_info.erase(sim_info.begin(), sim_info.begin() + 2);
    EXPECT_EQ(clear_the_way(), 1);
}
