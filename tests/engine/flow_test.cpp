#include "engine/flow.h"

#include <fcntl.h>
#include <sys/file.h>

#include "release.h"

class flow_steps : public release {
  protected:
    // A mirror with the list and the catalogue as they stand, behind a server that is down.
    void open_all(const std::string& list_version = "820") {
        open_mirror();
        stg.server_cnt = -1;
        served["/serverlist.txt"] = "I\n" + list_version + " version\nSERVERS\nBETA New 1\nSERVER " + dead.host() +
                                    "\n/r/\n|dead\nSERVER " + mirror->host() + "\n/r/\n|here\nENDOFLIST\n";
        publish("directory.txt", disk.write("directory.txt", "I\n900 version\nINSTALLER\n\n" + catalogue));
        for (const auto& [path, zip] : std::map(served))
            if (path.starts_with("/r/")) served["/r/New 1/" + path.substr(3)] = zip;
    }
    static bool scan() {
        return poll_until([] {
            flow_scan();
            return stg.dir_state == dir_ready;
        });
    }
    static bool reach_catalogue() {
        return poll_until([] {
            flow_server_list();
            flow_directory();
            return stg.dir_state != dir_fetching || app_done;
        });
    }
    const refusing_port dead;
};

TEST_F(flow_steps, a_whole_install_from_the_list_to_the_end) {
    shipped("All/a/f", "1");
    shipped("All/g", "2");
    open_all();
    ASSERT_TRUE(poll_until([] { return flow_server_list() == net_complete; }));
    stg.server_sel = 0;
    ASSERT_TRUE(reach_catalogue());
    EXPECT_EQ(server_list.install_name, "New 1");
    EXPECT_FALSE(scratch::exists(temp_path + "directory.txt.zip"));
    ASSERT_TRUE(scan());
    flow_disk_space();
    EXPECT_EQ(flow.tot_disk_req, 4);
    flow_install();
    ASSERT_EQ(stg.install_state, install_running);
    EXPECT_TRUE(poll_until([] {
        flow_file_work();
        return stg.install_state == install_over;
    }));
    EXPECT_EQ(stg.install_failed + flow.declined + flow.busy, 0);
    EXPECT_EQ(on_disk({"a/f", "g"}), "12");
    flow_destination_picked();
    EXPECT_EQ(stg.install_state, install_idle);
    EXPECT_EQ(stg.dir_state, dir_unread);
    EXPECT_EQ(next.all_done, 1);
    ASSERT_TRUE(scan());
    EXPECT_EQ(stg.disk_size, 0);
}

TEST_F(flow_steps, a_list_of_another_version_ends_the_program_and_a_broken_catalogue_is_fetched_again) {
    open_all("821");
    EXPECT_TRUE(reach_catalogue());
    EXPECT_EQ(app_done, 1);
    EXPECT_EQ(stg.server_cnt, -1);
    EXPECT_EQ(alerts.seen.back().line4, temp_path + "serverlist.txt");

    open_all();
    served["/r/New 1/directory.txt.zip"].resize(100);
    ASSERT_TRUE(poll_until([&] { return flow_server_list() && flow_directory() == net_complete; }));
    EXPECT_EQ(stg.dir_state, dir_fetching);
    EXPECT_EQ(alerts.seen.back().line1, "DIR-scan: The installer cannot extract a file.");
    EXPECT_EQ(alerts.seen.back().line3, "Compressed File/" + temp_path + "directory.txt.zip");
    EXPECT_FALSE(scratch::exists(temp_path + "directory.txt.zip"));
}

TEST_F(flow_steps, a_refusal_a_cancel_or_another_run_leaves_every_file) {
    put({{"withdrawn", "1"}, {"changed", "mine"}});
    history("All/withdrawn", {"1", "GONE"});
    history("All/withdrawn/f", {"1"});
    history("All/changed", {"1"});
    stg.dir_state = read();
    for (const auto& [agreed, answer] : {std::pair{0, 1}, {1, 3}, {0, 3}}) {
        agrees = agreed;
        answers = {answer};
        flow_install();
        EXPECT_EQ(stg.install_state, install_idle);
        EXPECT_EQ(flow.declined, 1);
    }
    const int other_run = open(dest_dir_path.c_str(), O_RDONLY | O_DIRECTORY);
    EXPECT_EQ(flock(other_run, LOCK_EX | LOCK_NB), 0) << "a refusal gives the destination free";
    next.down_kb = 7;
    flow_install();
    EXPECT_EQ(next.down_kb, 7);
    EXPECT_EQ(flow.busy - flow.declined, 1);
    close(other_run);
    flow.disk_space_avail = 0;
    agrees = 1;
    flow_install();
    EXPECT_EQ(questions, "changed;changed;changed;busy;");
    EXPECT_EQ(on_disk({"withdrawn", "changed"}), "1mine");

    flow.disk_space_avail = 1;
    answers = {1};
    flow_install();
    EXPECT_EQ(stg.install_state, install_running);
    EXPECT_TRUE(is_folder("withdrawn"));
}

TEST_F(flow_steps, a_reset_deletes_only_partial_zips_of_active_streams) {
    put({{"a.zip", "part"}, {"b.zip", "part"}, {"c.zip", "content"}, {"mine", ""}});
    ASSERT_EQ(file_to_zip(dest_dir_path + "mine", dest_dir_path + "d.zip"), 0);
    for (const char* path : {"All/a", "All/b", "All/c", "Linux/c.zip", "All/d"})
        row(path, "1");
    read();
    next = {5, 1, {1, 0, 1, 1}, {}, {2, 1, 4, 0}, 0, 1, 2, 3, 4};
    flow_quit();
    EXPECT_EQ(app_done, 1);
    EXPECT_EQ(on_disk({"a.zip", "b.zip", "c.zip"}), "partcontent");
    EXPECT_TRUE(is_there("b.zip") && is_there("d.zip"));
    EXPECT_EQ(next.all_done, 1);
    EXPECT_EQ(static_cast<float>(next.next_file + next.files_done) + next.disk_kb + next.down_kb + next.part_kb, 0);
    EXPECT_EQ(next.stream_on[0] + 2 * next.stream_on[1] + 4 * next.stream_on[2] + 8 * next.stream_on[3], 3);
}

TEST_F(flow_steps, the_share_is_smoothed_and_always_a_share) {
    xtim.prd_sim = 0.02f;
    const struct {
        float before, done, total, after;
    } cases[] = {{0.5f, 10, 10, 0.55f}, {0.5f, 0, 10, 0.45f}, {0.5f, 0, 0, 0},
                 {0, -5, 10, 0},        {0.95f, 100, 10, 1},  {0, 1, 0, 1}};
    for (const auto& c : cases) {
        flow.totl_inst_rat = c.before;
        next.disk_kb = c.done;
        flow.tot_disk_req = c.total;
        flow_file_work();
        EXPECT_NEAR(flow.totl_inst_rat, c.after, 1e-5) << c.done << "/" << c.total;
    }
}

TEST_F(flow_steps, room_is_judged_only_where_both_numbers_are_known) {
    const struct {
        const char* folder;
        float required;
        int dir_state, before, after;
    } cases[] = {{"dest/", 1, 3, 0, 1},       {"dest/", 1e18f, 3, 1, 0}, {"dest/", 0, 3, 0, 0},
                 {"dest/", 0, 3, 1, 1},       {"dest/", 1, 0, 0, 0},     {"to/be/made/", 1e18f, 3, 1, 0},
                 {"to/be/made/", 1, 3, 0, 1}, {"/", 1e18f, 3, 1, 0}};
    for (const auto& c : cases) {
        stg.dir_state = c.dir_state;
        stg.disk_size = c.required;
        flow.disk_space_avail = c.before;
        dest_dir_path = *c.folder == '/' ? c.folder : disk / c.folder;
        flow_disk_space();
        EXPECT_EQ(flow.disk_space_avail, c.after) << c.required << c.folder;
        EXPECT_GT(flow.tot_availabl, 0);
    }
    if (access("/dev/shm", W_OK) != 0) return;
    dest_dir_path = "/dev/shm/";  // as a rule a volume of its own
    stg.disk_size = stg.temp_size = 1;
    flow_disk_space();
    EXPECT_EQ(flow.disk_space_avail, 1);
    stg.temp_size = 1e18f;
    flow_disk_space();
    EXPECT_EQ(flow.disk_space_avail, 0) << "the temporary folder has no room";
}
