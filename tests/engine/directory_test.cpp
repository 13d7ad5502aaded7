#include "release.h"

class directory : public release {};

TEST_F(directory, rows_are_grouped_clamped_and_dropped_as_told) {
    catalogue =
        "noise\r\n DIR\tAll/Two words/\r\n\r\n"
        "FILE 9 9 1 2 3 $a a name.txt\rBOGUS between rows of one path\nFILE -2 -1 2 4 5 GONE a name.txt\n"
        "DIR\n"  // no argument, so no folder line
        "FILE 0 2 2 1 1 $b other \n"
        "FILE 0 0 3 6 7 $c a name.txt\n"  // came back after another path: a history of its own
        "FILE 0 0 3 1 1 $d 900 red terrain.png\nFILE 0 0 3 1 1 $d Earth Orbit Textures\n"
        "DIR All/Earth Orbit Textures/\nFILE 0 4 3 1 1 $e a name.txt";
    for (std::size_t at; (at = catalogue.find('$')) != std::string::npos;)  // a signature of one digit
        catalogue.replace(at, 1, std::string(31, catalogue[at + 1]));
    ASSERT_EQ(read(), 3);
    std::string seen;
    for (const file_history_struct& history : sim_info) {
        seen += history.back().path;
        for (const file_version_struct& v : history)
            seen += "|" + std::to_string(v.disc_set * 10 + v.platform) + std::to_string(v.version) + v.sig_want[0];
        seen += "\n";
    }
    EXPECT_EQ(seen,
              "All/Two words/a name.txt|461a|02G\nAll/Two words/other |22b\nAll/Two words/a name.txt|03c\n"
              "All/Earth Orbit Textures/a name.txt|43e\n");
    EXPECT_EQ(sim_info[0][0].zip_size + sim_info[0][0].ext_size, 5.0f);
    EXPECT_EQ(same_file(0), (std::vector<std::size_t>{0, 2}));
    EXPECT_TRUE(same_file(1).empty());
}

TEST_F(directory, every_kind_of_unreadable_header_is_refused) {
    for (const char* header : {"", "I", "I\n900", "X\n900 version\nINSTALLER\n", "I\n901 version\nINSTALLER\n",
                               "I\n900 version\nSERVERS\n", "I\n900 version\nINSTALLERS\n", "<html>"}) {
        app_done = stg.install_state = 0;
        EXPECT_EQ(read(header), 2) << header;
        EXPECT_TRUE(app_done == 1 && stg.install_state == install_over) << header;
        EXPECT_EQ(alerts.seen.back().line4, temp_path + "directory.txt");
    }
    EXPECT_EQ(read("A\r840 version\rINSTALLER\r"), 3);
    EXPECT_TRUE(sim_info.empty());
    EXPECT_THROW(read_directory(disk / "missing.txt", ""), left);
    EXPECT_EQ(alerts.seen.back().line3, disk / "missing.txt");
}

TEST_F(directory, a_row_that_would_leave_the_destination_spoils_the_catalogue) {
    for (const char* path : {"All/../x", "All/../../x", "All//x", "All//etc/passwd", "All/a/./x", "All/a/..", "All/.",
                             "..", "/x/../y", "All/a:b", "All/a\\b"}) {
        catalogue.clear();
        row("All/a.txt", "1");
        row(path, "1");
        EXPECT_EQ(read(), 2) << path;
        EXPECT_TRUE(sim_info.empty());
        EXPECT_EQ(alerts.seen.back().line4, path);
        EXPECT_EQ(alerts.seen.back().level, t_alert);
    }
    for (const char* name : {"All/a:b", "All/a\\b", "All/.velaris.part.7"}) {
        catalogue.clear();
        row(name, "1");
        EXPECT_EQ(read(), 2) << name;
    }
    for (const std::string& signature :
         {std::string("NONE"), std::string(31, 'a'), std::string(33, 'a'), std::string(32, 'g')}) {
        catalogue = "DIR All/\nFILE 0 0 1 1 1 " + signature + " x\n";
        EXPECT_EQ(read(), 2) << signature;
    }
    EXPECT_EQ(app_done, 0);
    catalogue = "DIR All/x/\nFILE 0 0 1 1 1 GONE \n";
    EXPECT_THROW(read(), left);
    EXPECT_EQ(alerts.seen.back().line4, "All/x/");
    EXPECT_TRUE(path_stays_below("..x/.y/...") && !path_stays_below("a/") && !path_stays_below({"a\0b", 3}));
}

TEST_F(directory, totals_count_what_the_target_lacks) {
    put({{"same", "1"}, {"stale", "old"}, {"gone", "1"}, {"case", "1"}});
    put_link("link", "nowhere");
    row("All/same", "1", 0, 1, 1000);
    row("All/stale", "new", 0, 2, 1);
    row("All/gone", "GONE", 0, 4, 1);
    row("All/Case", "1", 0, 8, 1);  // another file than "case"
    row("All/link", "nowhere", 0, 16, 1);
    row("Windows/w", "1", 2, 32, 1);
    row("All/lin", "1", 6, 64, 1);
    row("All/four", "1", 4, 128, 1);
    read();
    EXPECT_EQ(stg.down_size, 2 + 8 + 64);
    EXPECT_EQ(stg.disk_size, 3);
    EXPECT_EQ(this_install_has_exes, 0);
    stg.target_os = 2;
    read();
    EXPECT_EQ(stg.down_size, 2 + 8 + 32);
    EXPECT_EQ(this_install_has_exes, 1);
}
