// What lives between runs, and what a command line may say.
#include <gtest/gtest.h>

#include <cstdlib>

#include "app/console_options.h"
#include "app/dest.h"
#include "app/pref.h"
#include "app/start.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "net/http.h"
#include "platform/folders.h"
#include "runtime/cmdline.h"
#include "support/alerts.h"
#include "support/scratch.h"

namespace {

class Settings : public ::testing::Test {
  protected:
    Settings() {
        setenv("HOME", home.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    }
    ~Settings() override { remove_temp_folder(); }
    void arguments(std::vector<std::string> words) {
        kept = std::move(words);
        kept.insert(kept.begin(), "velaris-installer");
        argv.clear();
        for (std::string& word : kept)
            argv.push_back(word.data());
        argv.push_back(nullptr);
        cmdline.clear();
        cmdline.init_unix(argc(), argv.data());
    }
    int argc() const { return static_cast<int>(kept.size()); }
    std::string problem_with(std::vector<std::string> words, bool on_terminal = false) {
        arguments(std::move(words));
        std::string problem;
        options = console_options{};
        const bool usable = read_console_options(argc(), argv.data(), on_terminal, options, problem);
        EXPECT_EQ(usable, problem.empty());
        return problem;
    }

    scratch home;
    std::vector<std::string> kept;
    std::vector<char*> argv;
    console_options options;
};

TEST_F(Settings, EveryPreferenceSurvivesWritingAndReading) {
    stg.use_max_cpu = 1, stg.rename_folder = 0, stg.stream_count = 3, stg.log_actions = 1, stg.always_ask_dir = 1;
    dest_dir_path = "/Volumes/Big Disk/Sim/";
    http.proxy_host = "proxy.example", http.proxy_port_str = "8080", http.proxy_port = 8080;
    pref.IO_set(pref_installer, scan_write);
    EXPECT_EQ(
        scratch::read(home / "config/velaris/Velaris Installer.prf").rfind("I\n9001 version\n_use_max_cpu 1\n", 0), 0u);

    stg = stg_t{};
    dest_dir_path = http.proxy_host = http.proxy_port_str = "";
    http.proxy_port = 0;
    pref.IO_set(pref_installer, scan_read);
    EXPECT_EQ(stg.use_max_cpu + 10 * stg.rename_folder + 100 * stg.stream_count + 1000 * stg.log_actions +
                  10000 * stg.always_ask_dir,
              11301);
    EXPECT_EQ(dest_dir_path, "/Volumes/Big Disk/Sim/");
    EXPECT_EQ(http.proxy_host + ":" + http.proxy_port_str, "proxy.example:8080");
    EXPECT_EQ(http.proxy_port, 8080);
}

TEST_F(Settings, TheCommandLineWinsOverTheFileAndAnEmptyStringIsNotWritten) {
    home.write("config/velaris/Velaris Installer.prf",
               "A\r\n9001 version\r\n_stream_count 2\r\n_dest_dir_path /a b/\r\n_unknown x\r\n");
    arguments({"--pref:_stream_count=4", "--pref:_log_actions"});
    stg.log_actions = 7;
    pref.IO_set(pref_installer, scan_read);
    EXPECT_EQ(stg.stream_count, 4);
    EXPECT_EQ(stg.log_actions, 0);
    EXPECT_EQ(dest_dir_path, "/a b/");

    dest_dir_path = "";
    pref.IO_set(pref_installer, scan_write);
    EXPECT_EQ(scratch::read(home / "config/velaris/Velaris Installer.prf").find("_dest_dir_path"), std::string::npos);
}

TEST_F(Settings, AFileOfAnotherVersionOrKindIsAsGoodAsNone) {
    for (const char* bytes :
         {"I\n900 version\n_stream_count 2\n", "x\n9001 version\n_stream_count 2\n", "", "\xff\xfe"}) {
        home.write("config/velaris/Velaris Installer.prf", bytes);
        stg.stream_count = 1;
        pref.IO_set(pref_installer, scan_read);
        EXPECT_EQ(stg.stream_count, 1) << bytes;
    }
}

TEST_F(Settings, APlaceThatCannotBeWrittenIsToldAndEndsNothing) {
    setenv("XDG_CONFIG_HOME", (home.write("plain", "a file") + "/below").c_str(), 1);
    alert_catcher alerts;
    dest_dir_path = "/x/";
    pref.IO_set(pref_installer, scan_write);
    ASSERT_EQ(alerts.count(), 1u);
    EXPECT_EQ(alerts.seen[0].level, t_alert);
}

TEST_F(Settings, DisplaySizesOutOfBoundsComeBackAsTheDefaults) {
    app_path = home.path();
    home.write("Resources/preferences/Res Orbisuite.prf", "I\n9001 version\n_x_res_req_ALL 599\n_y_res_req_ALL 2000\n");
    pref.IO_set(pref_display, scan_read);
    EXPECT_EQ(display_prefs.x_res_req_ALL, 1024);
    EXPECT_EQ(display_prefs.y_res_req_ALL, 2000);
    pref.IO_set(pref_display, scan_write);
    EXPECT_NE(scratch::read(home / "Resources/preferences/Res Orbisuite.prf").find("_prefs_found 1\n"),
              std::string::npos);
}

TEST_F(Settings, StartTakesTheFolderFromTheArgumentAndGivesItItsSlash) {
    home.write("config/velaris/Velaris Installer.prf", "I\n9001 version\n_dest_dir_path /remembered/\n");
    arguments({});
    app_start(argc(), argv.data());
    EXPECT_EQ(dest_dir_path, "/remembered/");
    arguments({"-path"});  // nothing behind it: as if there were no argument
    app_start(argc(), argv.data());
    EXPECT_EQ(dest_dir_path, "/remembered/");
    arguments({"-path", "/there/my copy"});
    app_start(argc(), argv.data());
    EXPECT_EQ(dest_dir_path, "/there/my copy/");
    arguments({"-path", "here"});
    app_start(argc(), argv.data());
    EXPECT_EQ(dest_dir_path[0], '/');
    EXPECT_EQ(dest_dir_path.substr(dest_dir_path.size() - 6), "/here/");
}

TEST_F(Settings, AnUnwritableRootSendsTheDefaultBelowTheHomeFolder) {
    const std::string destination = default_destination();
    EXPECT_TRUE(destination == "/Velaris/" || destination == home.path() + "Velaris/") << destination;
    EXPECT_FALSE(scratch::exists(home / "Velaris"));
}

TEST_F(Settings, WrongUsageIsNamedInOneLine) {
    const struct {
        std::vector<std::string> words;
        const char* names;
    } wrong[] = {
        {{"--changed=maybe"}, "maybe"},
        {{"--changed=ask"}, "terminal"},
        {{"--give_up=soon"}, "soon"},
        {{"--give_up=-1"}, "-1"},
        {{"--give_up="}, "--give_up"},
        {{"--give_up=inf"}, "inf"},
        {{"--target_os=4"}, "4"},
        {{"--target_os"}, "--target_os"},
        {{"--list_host=h:0"}, "h:0"},
        {{"--list_host=h:65536"}, "h:65536"},
        {{"--list_host="}, "--list_host"},
        {{"--list_host=http://h"}, "http://h"},
        {{"--console", "-path", "/x"}, "-path"},
        {{"-path", "--console"}, "--console"},
        {{"-path", ""}, "-path"},
    };
    for (const auto& w : wrong) {
        const std::string problem = problem_with(w.words);
        EXPECT_NE(problem.find(w.names), std::string::npos) << w.words[0] << ": " << problem;
        EXPECT_EQ(problem.find('\n'), std::string::npos);
    }
}

TEST_F(Settings, FilesThatTheUserChangedAreNeverOverwrittenByDefault) {
    EXPECT_EQ(problem_with({}, false), "");
    EXPECT_EQ(options.changed, changed_files::cancel);
    EXPECT_EQ(problem_with({}, true), "");
    EXPECT_EQ(options.changed, changed_files::ask);
    EXPECT_EQ(problem_with({"--changed=keep", "--give_up=0.5", "--target_os=2", "--list_host=h:8080"}), "");
    EXPECT_EQ(options.changed, changed_files::keep);
    EXPECT_EQ(options.target_os, 2);
    EXPECT_EQ(options.list_host, "h:8080");
    EXPECT_DOUBLE_EQ(options.give_up_seconds, 0.5);
}

TEST_F(Settings, AChosenFolderIsACopyOrTheParentOfOne) {
    static std::string choice;
    choose_folder = [](const std::string&, const std::string&, const std::string&, std::string& chosen) {
        chosen = choice;
        return choice.empty() ? 0 : 1;
    };
    dest_dir_path = "/before/";
    EXPECT_EQ(pick_dest_path(), 0);
    EXPECT_EQ(dest_dir_path, "/before/");
    choice = "/";
    EXPECT_EQ(pick_dest_path(), 1);
    EXPECT_EQ(dest_dir_path, "/Velaris/");
    for (const char* name : {"sim/Airfoils/x", "sim/Instructions/x", "sim/Output/x"})
        home.write(name, "");
    choice = home / "sim";
    pick_dest_path();
    EXPECT_EQ(dest_dir_path, home / "sim/Velaris/");
    home.write("sim/Resources/x", "");
    pick_dest_path();
    EXPECT_EQ(dest_dir_path, home / "sim/");
}

}  // namespace
