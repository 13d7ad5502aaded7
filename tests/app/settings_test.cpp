// What lives between runs, and what a command line may say.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <regex>
#include <set>

#include "app/builder/settings.h"
#include "app/console/options.h"
#include "app/dest.h"
#include "app/options.h"
#include "app/pref.h"
#include "app/start.h"
#include "engine/stg.h"
#include "files/scan.h"
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
    std::string problem_with(std::vector<std::string> words) {
        arguments(std::move(words));
        std::string problem;
        console_options options;
        const auto wrong = wrong_options(argc(), argv.data(), installer_options);
        if (!wrong.empty()) return wrong.front().problem;
        const bool usable = read_console_options(false, options, problem);
        EXPECT_EQ(usable, problem.empty());
        return problem;
    }

    scratch home;
    std::vector<std::string> kept;
    std::vector<char*> argv;
};

TEST_F(Settings, WhatIsWrittenIsReadBackAndTheCommandLineWins) {
    stg.stream_count = 3;
    stg.log_actions = -7;
    dest_dir_path = "/a  b/\xff/";
    pref.IO_set(pref_installer, scan_write);
    stg = stg_t{};
    dest_dir_path = "";
    pref.IO_set(pref_installer, scan_read);
    EXPECT_EQ(stg.log_actions, -7);
    EXPECT_EQ(dest_dir_path, "/a  b/\xff/");
    dest_dir_path = "/x\n_stream_count 9";
    pref.IO_set(pref_installer, scan_write);
    pref.IO_set(pref_installer, scan_read);
    EXPECT_EQ(stg.stream_count, 3) << "a path wrote a setting";
    arguments({"--pref:_stream_count=4", "--pref:_log_actions=0"});
    pref.IO_set(pref_installer, scan_read);
    EXPECT_EQ(stg.stream_count, 4);
    EXPECT_EQ(stg.log_actions, 0);
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
}

TEST_F(Settings, StartTakesTheFolderFromTheArgumentAndGivesItItsSlash) {
    const std::string here = std::filesystem::current_path();
    const std::pair<std::vector<std::string>, std::string> starts[] = {{{"-path", "/there/my copy"}, "/there/my copy/"},
                                                                       {{"-path", "here//"}, here + "/here/"},
                                                                       {{"--pref:_dest_dir_path=/x/y"}, "/x/y/"}};
    for (const auto& [words, folder] : starts) {
        arguments(words);
        app_start(argc(), argv.data());
        EXPECT_EQ(dest_dir_path, folder);
    }
}

TEST_F(Settings, WrongUsageIsNamedInOneLine) {
    const struct {
        std::vector<std::string> words;
        const char* names;  // "" where the words are right
    } lines[] = {
        {{"--changed=maybe"}, "maybe"},
        {{"--changed=ask"}, "terminal"},
        {{"--give_up=inf"}, "inf"},
        {{"--scale=4.1"}, "4.1"},
        {{"--scale=nan"}, "nan"},
        {{"--list_host=h:65536"}, "h:65536"},
        {{"--list_host=https://h"}, ""},
        {{"--limit_rate=1.5M"}, "1.5M"},
        {{"--console", "-path", "/x"}, "-path FOLDER must stand before"},
        {{"-path", "--console"}, "--console"},
        {{"-path"}, "-path wants a folder"},
        {{"-path", "/a\nb"}, "'/a?b'"},
        {{"--chekc"}, "did you mean --check?"},
        {{"-console"}, "did you mean --console?"},
        {{"--use_sprite"}, "did you mean --use_sprites?"},
        {{"--bird=1"}, "I do not know the option '--bird'"},
        {{"\x1b[2J"}, "'?[2J'"},
        {{"--check=1"}, "--check takes no value"},
        {{"--no_vbos="}, "--no_vbos takes no value"},
        {{"--target_os"}, "--target_os wants a value: --target_os=1|2|3"},
        {{"--fps_test="}, "--fps_test=n"},
        {{"--pref:_stream_cuont=2"}, "'_stream_cuont'"},
        {{"--pref:_stream_count"}, "--pref:_stream_count=VALUE"},
        {{"--pref:_dest_dir_path=/a\r"}, "line end"},
        {{"-path", "a b", "--console", "--pref:_lang=1", "--use_fprogs", "--fps_test=102", "--no_sound", "-h"}, ""},
    };
    for (const auto& line : lines) {
        const std::string problem = problem_with(line.words);
        EXPECT_EQ(problem.empty(), *line.names == '\0') << line.words[0] << ": " << problem;
        EXPECT_NE(problem.find(line.names), std::string::npos) << line.words[0] << ": " << problem;
    }
}

// An option that is told and not read does nothing; one that is read and not told is refused.
TEST(Options, WhatHelpTellsIsWhatIsRead) {
    std::set<std::string> read;
    std::string all;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(VELARIS_ROOT_DIR "/src")) {
        if (entry.path().extension() != ".cpp") continue;
        const std::string text = scratch::read(entry.path());
        const std::regex reads(
            "(has_option|get_option|stands_in|setting|read_folder|read_path)\\([^\")]*\"(-[^\"]+)\"");
        for (std::sregex_iterator at(text.begin(), text.end(), reads), end; at != end; ++at)
            read.insert((*at)[2]);
    }
    EXPECT_GT(read.size(), 20u);
    std::set<std::string> told = {"-path", "--pref:KEY", "--console"};  // read in other ways
    for (const option_table* table : {&installer_options, &builder_options})
        for (const option_row& row : table->rows) {
            EXPECT_TRUE(told.contains(row.name) || read.contains(row.name)) << row.name << " is told and not read";
            EXPECT_NE(usage_text(*table).find("\n" + std::string(row.name)), std::string::npos);
            told.insert(row.name);
        }
    for (const std::string& name : read) {
        std::string argument = name;
        char* argv[] = {argument.data(), argument.data(), nullptr};
        const auto wrong = wrong_options(2, argv, installer_options);
        const bool known = wrong.empty() || wrong[0].problem.find("do not know") == std::string::npos;
        EXPECT_TRUE(known || told.contains(name)) << name << " is read and not told";
    }
}

}  // namespace
