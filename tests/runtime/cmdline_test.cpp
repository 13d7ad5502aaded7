#include "runtime/cmdline.h"

#include <gtest/gtest.h>

#include <vector>

#include "runtime/opened_log.h"
#include "support/alerts.h"

static UTL_cmdline parsed(std::vector<std::string> words) {
    std::vector<char*> argv{nullptr};
    for (std::string& word : words)
        argv.push_back(word.data());
    UTL_cmdline options;
    options.init_unix(static_cast<int>(argv.size()), argv.data());
    return options;
}

TEST(Cmdline, name_ends_at_the_first_equals_sign_and_the_last_value_wins) {
    opened_log log;
    const UTL_cmdline options = parsed({"--a=b=c", "--empty=", "foo", "--pref:_lang=1", "--twice=1", "--twice=2"});
    EXPECT_EQ(options.get_option("--a"), "b=c");
    EXPECT_TRUE(options.has_option("--empty"));
    EXPECT_EQ(options.get_option("--twice"), "2");
    EXPECT_FALSE(options.has_option("--absent"));
    EXPECT_EQ(log.text(),
              "     '--a'='b=c'\n     '--empty'\n     'foo'\n     '--pref:_lang'='1'\n     '--twice'='1'\n"
              "WARNING: command line option --twice=2included twice.\n     '--twice'='2'\n");
}

TEST(Cmdline, help_is_the_familys_text_to_the_letter_with_our_own_behind_it) {
    opened_log log;
    const alert_catcher catcher;
    cmdline_own_usage = "\nOUR OWN\n";
    testing::internal::CaptureStdout();
    EXPECT_THROW(parsed({"--a=1", "-h"}), left);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(text.starts_with("Usage: Velaris [options...]\n\nVelaris can take"));
    EXPECT_TRUE(text.ends_with("\nOUR OWN\n"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 86 + 2);
    EXPECT_EQ(log.text(), "     '--a'='1'\n     '-h'\n");
}
