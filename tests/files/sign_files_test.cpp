// A copy signed with the pool's workers and without, from scratch and with a store of signatures.
#include "files/sign_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>

#include "files/md5.h"
#include "files/signature_store.h"
#include "runtime/thread.h"
#include "support/scratch.h"

namespace fs = std::filesystem;

static std::vector<signed_file> sign(const scratch& box, const std::vector<std::string>& paths,
                                     const signature_store* store = nullptr) {
    std::vector<file_to_sign> files;
    files.reserve(paths.size());
    for (const std::string& path : paths)
        files.push_back({path, path == "large" ? 5000.0f : 1.0f});
    signing all(box.path(), files, store);
    while (!all.wait(1000)) {
    }
    EXPECT_EQ(all.share_done(), 1.0f);
    return all.take_results();
}

TEST(sign_files, finds_what_is_there_with_and_without_workers) {
    scratch box;
    std::vector<std::string> paths;
    for (int i = 0; i < 60; ++i) {
        const std::string folder = "folder " + std::to_string(i / 7);
        fs::create_directory(box / folder);
        paths.push_back(folder + "/" + std::to_string(i));
        box.write(paths.back(), std::string(static_cast<std::size_t>(i * i * 40), static_cast<char>(i)));
    }
    box.write("large", std::string(5'000'000, 'L'));
    fs::create_symlink("message digest", box / "link");
    fs::create_directory_symlink("folder 1", box / "by link");
    mkfifo((box / "pipe").c_str(), 0600);
    const struct {
        std::string path;
        file_state state;
        std::string signature;
    } others[] = {{"large", file_state::intact, md5_of(std::string(5'000'000, 'L'))},
                  {"link", file_state::intact, "f96b697d7cb7938d525a2f31aaf161d0"},
                  {"by link/8", file_state::intact, md5_of(std::string(8 * 8 * 40, 8))},
                  {"folder 1", file_state::folder, ""},
                  {"pipe", file_state::odd, ""},
                  {"nothing", file_state::missing, ""},
                  {"no folder/nothing", file_state::missing, ""},
                  {"large/below a file", file_state::missing, ""},
                  {std::string(300, 'n'), file_state::unreadable, ""}};  // a name that no disk has
    for (const auto& one : others)
        paths.push_back(one.path);

    for (const bool with_workers : {false, true}) {
        if (with_workers) {
            THREAD_init();
            THREAD_make_workers();
        }
        const std::vector<signed_file> results = sign(box, paths);
        for (std::size_t i = 0; i < 60; ++i)
            ASSERT_EQ(results[i].signature, md5_of(std::string(i * i * 40, static_cast<char>(i)))) << i;
        for (std::size_t i = 60; i < paths.size(); ++i) {
            EXPECT_EQ(results[i].state, others[i - 60].state) << paths[i];
            EXPECT_EQ(results[i].signature, others[i - 60].signature) << paths[i];
        }
        EXPECT_EQ(results.back().error, ENAMETOOLONG);
        EXPECT_EQ(results[60].identity.size, 5'000'000);
    }
    THREAD_shutdown();
    EXPECT_TRUE(sign(box, {}).empty());
    EXPECT_EQ(sign(box, {"../" + fs::path(box.path()).filename().string()})[0].signature, "");
}

TEST(sign_files, a_store_saves_the_reading_of_what_nobody_touched) {
    scratch box;
    const std::vector<std::string> paths = {"kept", "edited", "same size", "new file", "dir/with blank at end "};
    fs::create_directory(box / "dir");
    for (const std::string& path : paths)
        box.write(path, "content of " + path);
    const auto ten_seconds_ago = fs::file_time_type::clock::now() - std::chrono::seconds(10);
    std::vector<signed_file> first = sign(box, paths);
    const auto write = [&](std::int64_t later) {
        std::vector<stored_signature> rows;
        for (std::size_t i = 0; i < paths.size(); ++i)
            if (paths[i] != "new file") rows.push_back({paths[i], first[i].signature, first[i].identity});
        const std::int64_t now = first[0].identity.ctime;
        return write_signature_store(box / "store", rows, now + later);
    };
    ASSERT_EQ(write(1'000'000'000), 0);
    EXPECT_EQ(signature_store(box / "store").size(), 0u) << "too young to be told from what comes next";
    ASSERT_EQ(write(3'000'000'000), 0);
    EXPECT_FALSE(fs::exists(box / "store.new"));

    box.write("edited", "longer than it was before");
    box.write("same size", "CONTENT OF same size");
    fs::last_write_time(box / "same size", ten_seconds_ago);  // as a copying program does
    const signature_store store(box / "store");
    const std::vector<signed_file> again = sign(box, paths, &store);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const bool untouched = paths[i] == "kept" || paths[i].starts_with("dir/");
        EXPECT_EQ(again[i].from_store, untouched) << paths[i];
        EXPECT_EQ(again[i].signature == first[i].signature, untouched || paths[i] == "new file") << paths[i];
    }

    // Whatever happens to the store, it is never believed half.
    std::string whole;
    std::getline(std::ifstream(box / "store"), whole, '\0');
    const std::string damages[] = {"",
                                   "VELARIS SIGNATURES 1\n",
                                   whole.substr(0, whole.size() / 2),
                                   whole.substr(0, whole.size() - 1),
                                   "V" + whole,
                                   whole + whole,
                                   std::string(whole).replace(30, 1, "!")};
    for (const std::string& damage : damages) {
        box.write("damaged", damage);
        EXPECT_EQ(signature_store(box / "damaged").size(), 0u) << damage;
    }
    EXPECT_EQ(signature_store(box / "none").size() + signature_store("").size(), 0u);
    EXPECT_EQ(write_signature_store(box / "no folder/store", {}, 0), ENOENT);
}
