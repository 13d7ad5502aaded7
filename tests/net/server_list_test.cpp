#include "net/server_list.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "runtime/xtim.h"
#include "support/scratch.h"

static const std::string head = "I\n820 version\nSERVERS\n\n";

class ServerList : public testing::Test {
  protected:
    int read(const std::string& bytes) { return read_server_list(dir.write("serverlist.txt", bytes)); }
    scratch dir;
};

static std::string record(int n) {
    const std::string t = std::to_string(n);
    return "SERVER host" + t + "\n/folder" + t + "/\nText " + t + "\n";
}

TEST_F(ServerList, KeywordsAreTakenWholeAndForeignLinesAreSkipped) {
    const std::string text =
        "A\r\n820 version\r\nSERVERS\r\n\r\n"
        "BETA \t Velaris 9\r\n"
        "BETA_VERSION 90020\r\nBETA_INSTALLER_MAC www.tarvex.example /a b.zip\r\nFINAL Velaris 8\r\nFINAL_VERSION 1\r\n"
        "SERVERS no\r\nRUBBISH SERVER no\r\n"
        "  SERVER  one.example:8080\r\n\r\n\t /pub/x/\r\n  |One, with blanks \r\n"
        "SERVER\ttwo.example\r\n/\r\n|Two\r\n"
        "ENDOFLIST\r\nSERVER three.example\r\n/\r\n|Three\r\nBETA other\r\n";
    ASSERT_EQ(read(text), 2);
    EXPECT_EQ(server_list.install_name, "Velaris 9");
    EXPECT_EQ(server_list.server_name[0], "one.example:8080");
    EXPECT_EQ(server_list.server_path[0], "/pub/x/Velaris 9/");
    EXPECT_EQ(server_list.server_desc[0], "|One, with blanks ");
    EXPECT_EQ(server_list.server_name[1], "two.example");
    EXPECT_EQ(server_list.server_path[1], "/Velaris 9/");
    EXPECT_EQ(server_list.server_desc[1], "|Two");
}

TEST_F(ServerList, TheEleventhAndLaterServersStayOutOfReach) {
    std::string text = head + "BETA V\n";
    for (int n = 0; n < 13; ++n)
        text += record(n);
    EXPECT_EQ(read(text), 10);
    EXPECT_EQ(server_list.server_name[9], "host9");
    EXPECT_EQ(server_list.server_name[10], "host12");
    EXPECT_EQ(server_list.server_path[10], "/folder12/V/");
    EXPECT_EQ(server_list.server_name[11], "");
}

TEST_F(ServerList, AListCutAnywhereGivesOnlyServersWithAFolder) {
    const std::string text = head + "BETA V\n" + record(1) + record(2) + "ENDOFLIST";
    for (std::size_t n = 0; n <= text.size(); ++n) {
        const int count = read(text.substr(0, n));
        EXPECT_EQ(count == -1, n < head.size() - 2) << n;
        for (int i = 0; i < count; ++i)
            EXPECT_EQ(server_list.server_path[i][0], '/') << n;
    }
    EXPECT_EQ(read(text), 2);
    EXPECT_EQ(read(head + "BETA"), 0);
    EXPECT_EQ(server_list.install_name, "");
}

TEST_F(ServerList, AServerThatCouldNotBeAskedIsLeftOutAndSpoilsNoOther) {
    std::string text = head + "BETA V\n";
    for (const char* bad : {"host/\n/x/", "a host\n/x/", "host:0\n/x/", "host\nno slash/"})
        text += "SERVER " + std::string(bad) + "\nbad\n";
    EXPECT_EQ(read(text + record(1)), 1);
    EXPECT_EQ(server_list.server_name[0] + server_list.server_path[0] + server_list.server_desc[0],
              "host1/folder1/V/Text 1");
}

TEST_F(ServerList, AnotherVersionTitleOrNoFileIsNoList) {
    for (const char* other : {"I\n821 version\nSERVERS\n", "I\n820 version\nSERVERSX\n", "<html>"})
        EXPECT_EQ(read(other + record(1)), -1) << other;
    EXPECT_EQ(read_server_list(dir / "missing.txt"), -1);
    EXPECT_EQ(server_list.install_name, no_install_name);
}

TEST(ServerChoice, StaysInTheListAndFavoursItsTop) {
    std::srand(1);
    int biased[10] = {}, plain[10] = {};
    for (int n = 0; n < 10000; ++n) {
        const int b = pick_server_biased(10), p = pick_server_plain(10);
        ASSERT_TRUE(b >= 0 && b < 10 && p >= 0 && p < 10);
        ++biased[b];
        ++plain[p];
    }
    EXPECT_NEAR(biased[0], 2154, 200);  // 0.1 to the power 2/3
    EXPECT_NEAR(biased[9], 678, 120);
    EXPECT_NEAR(plain[0], 1000, 150);
    EXPECT_NEAR(plain[9], 1000, 150);
    for (int count : {-1, 0, 1}) {
        EXPECT_EQ(pick_server_biased(count), 0);
        std::srand(7);
        EXPECT_EQ(pick_server_plain(count), 0);
        const int drawn = std::rand();
        std::srand(7);
        EXPECT_EQ(std::rand(), drawn) << "a choice of one draws no number";
    }
    for (unsigned bad = 0; bad < 8; ++bad)
        for (int n = 0; n < 20; ++n) {
            const int chosen = pick_other_server(3, bad);
            EXPECT_TRUE(chosen >= 0 && chosen < 3 && (bad == 7 || !(bad >> chosen & 1))) << bad;
        }
}

TEST(ServerChoice, AServerThatWasLeftIsNotChosenForFiveMinutesWhileThereIsAnother) {
    const auto chosen = [](unsigned not_these = 0) {
        unsigned servers = 0;
        for (int n = 0; n < 200; ++n)
            servers |= 1u << pick_other_server(3, not_these);
        return servers;
    };
    xtim.real_time = 0;
    EXPECT_NE(leave_server(3, 0), 0);
    EXPECT_EQ(chosen(), 6u);
    xtim.real_time = 200;
    EXPECT_EQ(leave_server(3, 1), 2);
    EXPECT_EQ(chosen(4), 3u) << "one that was left is still better than one that lied about this file";
    leave_server(3, 2);
    EXPECT_EQ(chosen(), 7u);
    xtim.real_time = 301;
    EXPECT_EQ(chosen(), 1u) << "its time is over";
}
