// The sentences that a person reads, over the states of an install.
#include "app/words.h"

#include <gtest/gtest.h>

#include <cmath>

#include "engine/flow.h"
#include "engine/stg.h"
#include "net/http.h"
#include "net/server_list.h"
#include "runtime/xtim.h"

namespace {

std::string size_of(float kilobytes) {
    std::string text;
    set_size_str(kilobytes, &text);
    return text;
}

TEST(Sizes, TurnFromMegToGigAtAThousand) {
    EXPECT_EQ(size_of(12345), "12.3 Meg");
    EXPECT_EQ(size_of(999999), "999.10 Meg");  // a fraction that rounds up is not carried
    EXPECT_EQ(size_of(1000000), "1.0 Gig");
}

TEST(Header, SaysTheFirstThingThatFits) {
    struct {
        int all_done, servers, dir_state, install_state;
        const char* starts;
        tone kind;
    } const cases[] = {
        {1, -1, 0, 0, "INSTALLATION COMPLETE!", tone::good_news},
        {0, -1, 0, 0, "Looking for servers", tone::plain},
        {0, 0, 0, 0, "I could not find any servers", tone::bad_news},
        {0, 1, dir_fetching, 0, "I am checking the net for the latest version of Velaris right now, and I am 0% done",
         tone::plain},
        {0, 1, dir_failed, 0, "I can not find a version of Velaris on the net!", tone::bad_news},
        {0, 1, dir_ready, install_running, "OK I am installing this now...", tone::plain},
        {0, 1, dir_ready, install_idle, "To make the download a LOT faster", tone::plain},
    };
    dest_dir_path = "/no such folder/";
    for (const auto& c : cases) {
        next.all_done = c.all_done;
        stg.server_cnt = c.servers;
        stg.dir_state = c.dir_state;
        stg.install_state = c.install_state;
        const sentence said = header_sentence();
        EXPECT_EQ(said.text.rfind(c.starts, 0), 0u) << said.text;
        EXPECT_EQ(said.kind, c.kind) << said.text;
    }
    const auto large = http.slots[slot_directory] = std::make_shared<down_class>(http_request{"127.0.0.1:1", "/", ""});
    stg.dir_state = dir_fetching;
    large->content_len = 4'000'000'000;
    large->received = 3'000'000'000;
    EXPECT_NE(header_sentence().text.find("I am 75% done checking."), std::string::npos);
    http.slots[slot_directory] = nullptr;
}

TEST(Status, OffersWhatTheVolumeHoldsAndSaysInEveryStateThatADownloadFails) {
    stg.dir_state = dir_ready;
    server_list.install_name = "Velaris 9";
    EXPECT_EQ(status_lines().line[0].text, "Your copy of Velaris is already the latest version.");

    flow.tot_disk_req = 5000;
    EXPECT_EQ(status_lines().line[0].text, "You are about to install 5.0 Meg of files to get Velaris 9.");
    flow.tot_availabl = 6000;
    EXPECT_EQ(status_lines().line[2].text, "You may install at will.");
    flow.disk_space_avail = 0;
    EXPECT_EQ(status_lines().line[2].text, "You don't have enough disk space to install this!");
    EXPECT_EQ(status_lines().line[2].kind, tone::bad_news);

    crnt_file_path = "/a/b.zip";
    stg.down_failed = 1;
    for (const int state : {install_idle, install_running, install_over}) {
        stg.install_state = state;
        EXPECT_EQ(status_lines().line[0].text, "I can NOT download the file '/a/b.zip'!");
        EXPECT_EQ(status_lines().line[2].kind, tone::error);
    }
}

TEST(Pace, CountsFilesInFlightAndNeverDividesByNothing) {
    stg.install_state = install_running;
    flow.tot_down_req = 100'000;
    flow.totl_inst_rat = 0.5f;
    next.start_time = 0;
    xtim.real_time = 0.25f;  // the first second counts as a whole one
    next.down_kb = 300;
    next.part_kb = 200;
    next.stream_on[0] = next.stream_on[2] = 1;
    EXPECT_DOUBLE_EQ(get_install_pace().rate_kb_s, 500);
    EXPECT_TRUE(status_lines().line[2].text.starts_with("About 3 minutes left")) << status_lines().line[2].text;
    next.down_kb = next.part_kb = 0;
    EXPECT_FALSE(std::isfinite(get_install_pace().seconds_left));
    EXPECT_EQ(time_left_text(get_install_pace().seconds_left), "0 hours");
    EXPECT_EQ(time_left_text(7199), "119 minutes");
    EXPECT_EQ(time_left_text(7200), "2 hours");
}

}  // namespace
