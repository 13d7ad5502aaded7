#include "engine/choose.h"

#include "release.h"

class choose : public release {
  protected:
    std::string flags() const {
        std::string text;
        for (const file_history_struct& history : sim_info)
            text += history.back().do_fetch ? 'F' : history.back().do_delete ? 'D' : '-';
        return text;
    }
};

TEST_F(choose, every_combination_is_decided) {
    const char* const signatures[] = {"NONE", "current", "older", "oldest", "changed"};
    const verdict by_have[2][5] = {
        {verdict::fetch, verdict::leave, verdict::fetch, verdict::fetch, verdict::ask},
        {verdict::leave, verdict::remove, verdict::remove, verdict::remove, verdict::ask}};  // withdrawn
    for (int n = 0; n < 3 * 7 * 2 * 5 * 2; ++n) {
        const int target = n % 3 + 1, platform = n / 3 % 7, disc_set = n / 21 % 2 * 4, have = n / 42 % 5,
                  gone = n / 210;
        file_history_struct history(3);
        history[0].platform = (platform + 1) % 3;  // older rows count whatever they were for
        history[0].sig_want = "oldest";
        history[1].sig_want = "older";
        history[2].sig_want = "current";
        if (gone) history.emplace_back().sig_want = "GONE";
        history.back().platform = platform;
        history.back().disc_set = disc_set;
        history.back().sig_have = signatures[have];
        sim_info = {history};
        stg.target_os = target;
        const bool wanted = platform == 0 || platform == target || (platform == 6 && target == 3);
        EXPECT_EQ(decide_file(0), wanted ? by_have[gone][have] : verdict::leave) << n;
        EXPECT_EQ(want_this_f(0, 2 + gone, disc_set + 1), 0);
    }
}

TEST_F(choose, answers_for_one_file_and_for_a_folder) {
    xer.open(disk / "log");
    put({{"a/1", "mine"}, {"a/2", "mine"}, {"a/b/3", "mine"}, {"c", "mine"}});
    history("All/a/1", {"1"});
    history("All/a/2", {"1", "GONE"});
    history("All/a/b/3", {"1"});
    history("All/c", {"1"});
    read();
    const struct {
        std::vector<int> answers;
        int result;
        const char *flags, *questions, *finished;
    } cases[] = {
        {{1, 2, 1, 1}, 1, "F-FF", "a/1;a/2-;a/b/3;c;", "2a/2:0;"},
        {{2, 1, 2, 2}, 1, "-D--", "a/1;a/2-;a/b/3;c;", "2a/1:0;2a/b/3:0;2c:0;"},
        {{4, 2, 1}, 1, "FD-F", "a/1;a/b/3;c;", "2a/b/3:0;"},
        {{5, 4, 5}, 1, "--F-", "a/1;a/b/3;c;", "2a/1:0;2a/2:0;2c:0;"},
        {{1, 1, 3}, 0, "FDF-", "a/1;a/2-;a/b/3;", ""},  // what was not reached keeps its flags
    };
    for (const auto& c : cases) {
        questions = finished = "";
        answers = c.answers;
        EXPECT_EQ(choose_files(), c.result);
        EXPECT_EQ(flags(), c.flags);
        EXPECT_EQ(questions, c.questions);
        EXPECT_EQ(finished, c.finished);
    }
    const std::string line = "File: " + dest_dir_path + "a/2  sig_want=GONE  sig_have=" + signature_of("mine") + "\n";
    EXPECT_NE(log_text().find(line), std::string::npos) << log_text();
}

TEST_F(choose, a_file_that_moved_between_distribution_folders_is_not_deleted) {
    put({{"moved", "old"}, {"back", "new"}, {"left", "old"}});
    row("Linux/moved", "new", 3);
    row("Linux/back", "new", 3);
    row("Windows/left", "new", 2);
    for (const char* path : {"All/moved", "All/back", "All/left"})
        history(path, {"old", "GONE"});
    read();
    EXPECT_EQ(choose_files(), 1);
    EXPECT_EQ(flags(), "F----D");  // "left" lives on for Windows only
    EXPECT_EQ(questions, "");
    put({{"moved", "mine"}});
    read();
    answers = {2};
    EXPECT_EQ(choose_files(), 1);
    EXPECT_EQ(questions, "moved;");
}
