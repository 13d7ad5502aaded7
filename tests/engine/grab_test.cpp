#include "engine/grab.h"

#include "release.h"

class grab : public release {};

TEST_F(grab, an_update_fetches_deletes_sweeps_and_logs) {
    open_mirror();
    xer.open(disk / "log");
    stg.log_actions = 1;
    put({{"a/stale", "old"},
         {"same", "1"},
         {"old/deep/er/f", "1"},
         {"old/.hidden", "mine"},
         {"part/f", "1"},
         {"part/mine", "1"}});
    row("All/a/stale", "old");
    shipped("All/a/stale", "new");
    shipped("All/same", "1");
    shipped("All/App/Contents/MacOS/run me", "program");
    shipped("All/link", "a/stale", true);
    history("All/old/deep/er/f", {"1", "GONE"});
    history("All/part/f", {"1", "GONE"});
    prepare();
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(stg.install_failed, 0);
    EXPECT_EQ(next.files_done, 5);
    EXPECT_EQ(next.disk_kb, 6);
    EXPECT_EQ(on_disk({"a/stale", "link"}), "newnew");
    EXPECT_EQ(access((dest_dir_path + "App/Contents/MacOS/run me").c_str(), X_OK), 0);
    EXPECT_FALSE(is_there("old/deep") || is_there("part/f"));
    EXPECT_TRUE(is_there("old/.hidden") && is_there("part/mine"));
    EXPECT_NE(finished.find("1App/Contents/MacOS/run me:0;"), std::string::npos) << finished;
    EXPECT_NE(finished.find("0part/f:0;"), std::string::npos) << finished;
    for (const std::string& line :
         {"EXPANDING file " + dest_dir_path + "a/stale, with result=0.\n", "CHMODING  file " + dest_dir_path,
          "DELETING  file " + temp_path + "0.zip, with result=0.\n",
          "now we want to nuke a file: DELETING  file " + dest_dir_path + "part/f, with result=0.\n",
          "cleanup: DELETING  file " + dest_dir_path + "old/deep/er/, with result=0.\n",
          "cleanup: DELETING  file " + dest_dir_path + "old/, with result=39.\n"})
        EXPECT_NE(log_text().find(line), std::string::npos) << line << log_text();
    EXPECT_EQ(log_text().find("file " + dest_dir_path + "part/,"), std::string::npos);

    prepare();  // a second run finds nothing to do
    EXPECT_EQ(stg.disk_size, 0);
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(requests + finished, "");
}

TEST_F(grab, a_folder_became_a_link_and_its_withdrawn_files_spare_what_the_link_leads_to) {
    open_mirror();
    const std::string versions = "Resources/plugins/QRNK.framework/Versions/";
    disk.write("dest/" + versions + "Current/f", "1");
    shipped("All/" + versions + "A/f", "1");
    shipped("All/" + versions + "Current", "A", true);
    history("All/" + versions + "Current/f", {"1", "GONE"});
    shipped("All/mine/g", "1");
    put_link("mine", versions + "A");  // the user's own link is as good as a folder
    stg.stream_count = 1;              // so that the link is there before the withdrawn file's turn comes
    for (int round = 0; round < 2; ++round) {
        prepare();
        EXPECT_EQ(run(), 1);
        EXPECT_TRUE(is_link(versions + "Current"));
        EXPECT_EQ(scratch::read(dest_dir_path + versions + "A/f"), "1");
    }
    EXPECT_EQ(sim_info[2].back().sig_have, "NONE");
    EXPECT_EQ(sim_info[3].back().have_file, 1);
    EXPECT_EQ(alerts.last(), "");
}

TEST_F(grab, a_failed_transfer_is_tried_again_elsewhere_and_rewinds_the_list) {
    open_mirror();
    const refusing_port dead;
    stg.server_cnt = 2;
    server_list.server_name[1] = dead.host();
    server_list.server_path[1] = "/r/";
    for (const char* path : {"All/0", "All/1", "All/2", "All/3", "All/4", "All/5"})
        shipped(path, path);
    prepare();
    next = {4, 0, {1}, {}, {2}, 0, 0, 0, 0, 0};  // one stream, at file 2
    stg.server_sel = 1;
    ASSERT_TRUE(poll_until([] { return grab_files() || stg.down_failed; }));
    EXPECT_EQ(next.next_file, 2);
    EXPECT_EQ(next.stream_fresh[0], 0);
    stream_reset();
    failures = {{"/r/All/3.zip", 2}, {"/r/All/5.zip", 1}};
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(stg.down_failed + stg.install_failed, 0);
    read();
    EXPECT_EQ(stg.down_size, 0);
}

TEST_F(grab, streams_follow_the_speed_or_the_preference) {
    EXPECT_EQ(grab_files(), 1);  // an empty catalogue is done at once
    for (int i = 0; i < 40; ++i)
        row("Windows/" + std::to_string(i), "1", 2);
    const struct {
        float kb_in_100_s;
        int preference, streams;
    } cases[] = {{0, 0, 2},     {5000, 0, 2}, {5001, 0, 4}, {10001, 0, 4}, {50000, 0, 4},
                 {50000, 1, 1}, {0, 3, 3},    {0, 4, 4},    {0, -7, 1}};
    for (const auto& c : cases) {
        prepare();
        next.down_kb = c.kb_in_100_s;
        next.start_time = 0;
        xtim.real_time = 100;
        stg.stream_count = c.preference;
        for (int turn = 0; turn < 5; ++turn)
            EXPECT_EQ(grab_files(), 0);
        EXPECT_EQ(std::count(next.stream_on, next.stream_on + stream_max, 1), c.streams) << c.kb_in_100_s;
    }
}

TEST_F(grab, the_destination_takes_the_release_name_only_when_programs_came) {
    const struct {
        int has_exes, preference;
        const char *name, *folder;
    } cases[] = {{0, 1, "New 1", "dest/"}, {1, 0, "New 1", "dest/"},  {1, 1, "tmp/New", "dest/"},
                 {1, 1, "", "dest/"},      {1, 1, "New 1", "New 1/"}, {1, 1, "New 1", "New 1/"}};
    for (const auto& c : cases) {
        prepare();
        this_install_has_exes = c.has_exes;
        stg.rename_folder = c.preference;
        server_list.install_name = c.name;
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(dest_dir_path, disk / c.folder);
        EXPECT_TRUE(is_there("Output"));
    }
}

TEST_F(grab, a_zip_that_cannot_be_expanded_ends_the_install_even_as_the_last_file) {
    open_mirror();
    put({{"a/f", "old"}});
    row("All/a/f", "old");
    shipped("All/a/f", "new");
    served["/r/All/a/f.zip"] = "no archive";
    row("Windows/other", "1", 2);
    stg.stream_count = 1;
    for (int streams : {1, 2}) {
        prepare();
        next = {streams, 0, {0, 1, streams > 1}, {0, 0, 1}, {}, 0, 0, 0, 0, 0};  // the second one is idle
        this_install_has_exes = 1;
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(stg.install_failed, 1);
        EXPECT_EQ(next.all_done, 0);
        EXPECT_EQ(next.next_file, streams);  // a stream that is left goes no further
        EXPECT_EQ(alerts.seen.back().line1, "The installer cannot extract a file.");
        EXPECT_EQ(alerts.seen.back().line3, "Compressed File: " + temp_path + "1.zip");
        EXPECT_EQ(alerts.seen.back().line4, "Destination: " + dest_dir_path + "a/f");
        EXPECT_FALSE(scratch::exists(temp_path + "1.zip"));
        EXPECT_EQ(on_disk({"a/f"}) + finished, "old1a/f:20001;");
        stg.install_failed = 0;
    }
}

TEST_F(grab, what_does_not_sign_as_promised_never_takes_the_old_files_place) {
    open_mirror();
    put({{"a/f", "old"}});
    row("All/a/f", "old");
    row("All/a/f", "new");
    const auto zip_of = [this](const std::string& name, const std::string& content) {
        EXPECT_EQ(file_to_zip(disk.write("lie/" + name, content), disk / "lie.zip"), 0);
        return scratch::read(disk / "lie.zip");
    };
    // Other bytes, another file, one that is larger than any that the row may mean, and an archive of nothing.
    for (const std::string& lie : {zip_of("f", "bad"), zip_of("precious", "new"), zip_of("f", std::string(99'000, 'x')),
                                   std::string("PK\5\6") + std::string(18, '\0')}) {
        served["/r/All/a/f.zip"] = lie;
        prepare();
        EXPECT_EQ(run(), 1);
        EXPECT_EQ(stg.install_failed, 1);
        EXPECT_EQ(requests, "/r/All/a/f.zip;/r/All/a/f.zip;/r/All/a/f.zip;") << "three tries in a row";
        EXPECT_EQ(alerts.seen.back().line4, "Destination: " + dest_dir_path + "a/f");
        EXPECT_EQ(on_disk({"a/f"}), "old");
        EXPECT_FALSE(is_there("a/precious"));
        stg.install_failed = 0;
    }
}

TEST_F(grab, a_server_that_lies_is_left_for_another_one) {
    open_mirror();
    stg.server_cnt = 2;
    server_list.server_name[1] = server_list.server_name[0];
    server_list.server_path[1] = "/good/";
    put({{"a/f", "old"}});
    row("All/a/f", "old");
    shipped("All/a/f", "new");
    served["/good/All/a/f.zip"] = served["/r/All/a/f.zip"];
    served["/r/All/a/f.zip"] = "Please sign in.";
    prepare();
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(stg.install_failed, 0);
    EXPECT_EQ(on_disk({"a/f"}), "new");
    EXPECT_EQ(requests, "/r/All/a/f.zip;/good/All/a/f.zip;");
    EXPECT_EQ(alerts.last(), "");
}

TEST_F(grab, a_link_that_is_laid_during_the_run_is_no_way_out) {
    open_mirror();
    disk.write("outside/old", "1");
    put({{"a/old", "1"}});
    shipped("All/a/f", "1");
    history("All/a/old", {"1", "GONE"});
    prepare();
    ASSERT_EQ(rename((dest_dir_path + "a").c_str(), (dest_dir_path + "b").c_str()), 0);
    put_link("a", "../outside");
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(stg.install_failed, 1);
    EXPECT_TRUE(is_link("a"));
    EXPECT_FALSE(scratch::exists(disk / "outside/f"));
    EXPECT_EQ(scratch::read(disk / "outside/old"), "1");
}

TEST_F(grab, a_transfer_left_over_from_an_install_that_ended_is_not_taken_for_another_file) {
    open_mirror();
    shipped("All/a/first", "1");
    shipped("All/b/second", "2");
    prepare();
    next.next_file = 1;
    ASSERT_EQ(grab_files(), 0);  // stream 0 asks for the second file
    stream_reset();
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(on_disk({"a/first", "b/second", "a/second"}), "12");
}

TEST_F(grab, what_no_server_has_is_set_aside_and_told_at_the_end) {
    open_mirror();
    stg.server_cnt = 2;
    server_list.server_name[1] = server_list.server_name[0];
    server_list.server_path[1] = "/late/";
    for (const char* path : {"All/a", "All/b", "All/c", "All/d"})
        shipped(path, path);
    served["/late/All/b.zip"] = served["/r/All/b.zip"];
    served.erase("/r/All/b.zip");
    served.erase("/r/All/c.zip");
    prepare();
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(on_disk({"a", "b", "d"}), "All/aAll/bAll/d");
    EXPECT_EQ(stg.install_failed, 1);
    ASSERT_EQ(alerts.count(), 1U) << alerts.last();
    EXPECT_EQ(alerts.seen[0].line2 + alerts.seen[0].line3, "Missing: 1. Everything else was installed.They are: c");
    for (const char* path : {"/r/All/c.zip;", "/late/All/c.zip;"}) {
        std::size_t times = 0;
        for (std::size_t at = requests.find(path); at != std::string::npos; at = requests.find(path, at + 1))
            ++times;
        EXPECT_GE(times, 2U) << requests;
        EXPECT_LE(times, 3U) << requests;
    }
}
