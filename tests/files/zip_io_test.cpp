#include "files/zip_io.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <minizip/zip.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <thread>
#include <vector>

#include "files/error_str.h"
#include "files/md5.h"
#include "platform/beneath.h"
#include "support/scratch.h"

using namespace std::string_literals;

namespace {

constexpr unsigned long plain_file = 0100644ul << 16;
constexpr unsigned long link_to = 0xa1ed0000;

struct entry {
    std::string name, bytes;
    unsigned long attributes = plain_file;
    int method = Z_DEFLATED;
};

std::string noise(std::size_t size) {
    std::string text;
    for (unsigned state = 1; text.size() < size; state = state * 1664525u + 1013904223u)
        text += static_cast<char>(state >> 24);
    return text;
}

std::string link_text(const std::string& path) {
    return std::filesystem::read_symlink(path).string();
}

struct stat facts(const std::string& path) {
    struct stat st = {};
    stat(path.c_str(), &st);
    return st;
}

class archive : public testing::Test {
  protected:
    archive() { std::filesystem::create_directory(out); }
    // An archive as another program could have made it, with nothing checked.
    void make(const std::vector<entry>& entries) {
        const zipFile made = zipOpen64(zip.c_str(), APPEND_STATUS_CREATE);
        for (const entry& e : entries) {
            zip_fileinfo info = {};
            info.external_fa = e.attributes;
            zipOpenNewFileInZip64(made, e.name.c_str(), &info, nullptr, 0, nullptr, 0, nullptr, e.method, -1, 0);
            zipWriteInFileInZip(made, e.bytes.data(), static_cast<unsigned>(e.bytes.size()));
            zipCloseFileInZip(made);
        }
        zipClose(made, nullptr);
    }
    int expand() { return zip_to_file(zip, out, nullptr, 0); }
    int expand(const std::vector<entry>& entries) {
        make(entries);
        return expand();
    }
    // Hidden items count: an expansion leaves nothing of its own.
    std::ptrdiff_t left_in_out() const { return std::distance(std::filesystem::directory_iterator(out), {}); }
    scratch box;
    const std::string out = box / "out/", zip = box / "a.zip";
};

}  // namespace

TEST_F(archive, round_trip_keeps_bytes_name_mode_and_local_date) {
    setenv("TZ", "EST5EDT,M3.2.0,M11.1.0", 1);
    tzset();
    const std::string bytes = noise(700001);  // several blocks and an odd end
    const std::string source = box.write("Some name.bin", bytes);
    chmod(source.c_str(), 0751);
    // 10:20:30 there, in summer time and not; then what the format cannot hold is brought to its ends.
    const std::time_t rows[][2] = {
        {1183558830, 1183558830}, {1199200830, 1199200830}, {1000, 315550800}, {5000000000, 4354837198}};
    for (const auto& [date, want] : rows) {
        const timespec times[2] = {{date, 0}, {date, 0}};
        utimensat(AT_FDCWD, source.c_str(), times, 0);
        ASSERT_EQ(file_to_zip(source, zip), 0);
        const unzFile made = unzOpen64(zip.c_str());
        unz_file_info64 info;
        unzGetCurrentFileInfo64(made, &info, nullptr, 0, nullptr, 0, nullptr, 0);
        unzClose(made);
        EXPECT_EQ(info.external_fa, 0100751ul << 16);
        EXPECT_TRUE(date != want || info.tmu_date.tm_hour == 10) << "the zip holds local time";
        EXPECT_EQ(info.version_needed, 20u) << "an ordinary zip has no need of zip64";

        ASSERT_EQ(expand(), 0);
        EXPECT_EQ(facts(out + "Some name.bin").st_mode, 0100751u);
        EXPECT_EQ(facts(out + "Some name.bin").st_mtime, want);
        EXPECT_TRUE(scratch::read(out + "Some name.bin") == bytes);
        EXPECT_EQ(left_in_out(), 1);
    }
}

TEST_F(archive, a_link_travels_as_a_link_and_replaces_a_file) {
    std::filesystem::create_symlink("Versions/Current/Gone", box / "L");
    ASSERT_EQ(file_to_zip(box / "L", zip), 0);
    box.write("out/L", "a file before");
    ASSERT_EQ(expand(), 0);
    EXPECT_EQ(link_text(out + "L"), "Versions/Current/Gone");
    // And a file replaces a link, without writing through it.
    box.write("outside", "kept");
    ASSERT_EQ(expand({{"L", "../outside", link_to, 0}}), 0);
    ASSERT_EQ(expand({{"L", "now a file"}}), 0);
    EXPECT_EQ(scratch::read(box / "outside"), "kept");
    // One that cannot be made leaves what was there.
    EXPECT_EQ(expand({{"L", std::string(5000, 'x'), link_to, 0}}), -1);
    EXPECT_EQ(expand({{"L", "", link_to, 0}}), -1);
    EXPECT_EQ(scratch::read(out + "L"), "now a file");
    box.write("out/D/inside", "x");
    EXPECT_EQ(expand({{"D", "L", link_to, 0}}), -1);
    EXPECT_EQ(expand({{"D", "a file"}}), EISDIR);
    EXPECT_EQ(left_in_out(), 2);
}

TEST_F(archive, attributes_decide_mode_and_kind) {
    umask(026);
    ASSERT_EQ(
        expand(
            {{"none", "1", 0}, {"dos", "2", 0x20}, {"all", "3", 0100777ul << 16}, {"odd", "target", 0xe1edul << 16}}),
        0);
    EXPECT_EQ(facts(out + "none").st_mode & 0777, 0640u);
    EXPECT_EQ(facts(out + "all").st_mode & 0777, 0751u) << "no right that the user keeps from new files";
    EXPECT_LT(std::time(nullptr) - facts(out + "none").st_mtime, 1000) << "without attributes the file is of today";
    EXPECT_EQ(facts(out + "dos").st_mode & 0777, 0u);
    EXPECT_EQ(link_text(out + "odd"), "target");
}

TEST_F(archive, folders_are_made_and_the_first_name_is_told) {
    std::string name = "given";
    make({{"sub/", ""}, {"sub/x", "inside"}, {"__MACOSX/", ""}});
    ASSERT_EQ(zip_to_file(zip, out, &name, 0), 0);
    EXPECT_EQ(name, "sub/");
    EXPECT_EQ(scratch::read(out + "sub/x"), "inside");
    EXPECT_EQ(expand(), 0) << "a folder that is there is no failure";
    name = "given";
    make({{"own", "first"}, {"second", "2"}});
    ASSERT_EQ(zip_to_file(zip, out, &name, 1), 0);
    EXPECT_EQ(name, "own");
    EXPECT_EQ(scratch::read(out + "given") + scratch::read(out + "second"), "first2");
    EXPECT_EQ(left_in_out(), 3);
}

TEST_F(archive, a_fork_is_checked_and_dropped) {
    std::string head("\0\5\x16\7\0\2", 6);
    head.resize(24);
    EXPECT_EQ(expand({{"__MACOSX/._f", head}, {"f", "data"}, {"__MACOSX/._f", head + noise(300000)}}), 0);
    EXPECT_EQ(left_in_out(), 1);
    head[20] = 1;
    EXPECT_EQ(expand({{"__MACOSX/._f", head}}), err_fork_header);
    EXPECT_EQ(expand({{"__MACOSX", "short"}}), err_fork_header);
}

TEST_F(archive, a_name_cannot_lead_out_of_the_folder) {
    std::filesystem::create_symlink(box.path(), out + "way");
    for (const std::string& name : {"../x"s, box / "x", "a/../../x"s, ".."s, "__MACOSX/../x"s, "way/x"s})
        EXPECT_EQ(expand({{name, "bad"}}), err_zip_read) << name;
    EXPECT_EQ(expand({{"new", "..", link_to, 0}, {"new/x", "bad"}}), err_zip_read);
    // Nor can a link that was planted where the expansion writes first.
    box.write("precious", "kept");
    std::filesystem::create_symlink("../precious", out + ".velaris.part");
    ASSERT_EQ(expand({{"f", "new"}}), 0);
    EXPECT_EQ(scratch::read(out + "f") + scratch::read(box / "precious"), "newkept");
    EXPECT_FALSE(scratch::exists(box / "x"));
    // A name may fill the buffer to its last byte; with one more it would be cut to another name.
    const std::string deep = "s/" + std::string(254, 'n');
    EXPECT_EQ(expand({{"s/", ""}, {deep, "good"}, {"..x", "good"}}), 0);
    EXPECT_EQ(scratch::read(out + deep), "good");
    EXPECT_EQ(expand({{deep + "n", "bad"}}), err_zip_read);
}

TEST_F(archive, only_what_was_promised_takes_the_place_of_the_old_file) {
    const std::string abc = "900150983cd24fb0d6963f7d28e17f72";  // signature of "abc"
    const entry good = {"f", "abc"}, fork = {"__MACOSX/._f", "\0\5\x16\7\0\2"s + std::string(18, 0)};
    const struct {
        std::vector<entry> entries;
        int result;
    } rows[] = {{{good}, 0},
                {{good, fork}, 0},
                {{{"f", "abc", link_to, 0}}, 0},
                {{{"f", "abd"}}, err_wrong_content},
                {{{"f", "abcd"}}, err_wrong_content},
                {{{"F", "abc"}}, err_wrong_content},
                {{{"sub/f", "abc"}}, err_wrong_content},
                {{{"sub/", ""}, good}, err_wrong_content},
                {{good, {"g", "abc"}}, err_wrong_content},
                {{good, good}, err_wrong_content},
                {{good, fork, fork}, err_wrong_content},
                {{fork}, err_wrong_content},
                {{{"f", std::string(5000, 'x'), link_to, 0}}, err_wrong_content}};
    for (const auto& row : rows) {
        unlink((out + "a/f").c_str());
        box.write("out/a/f", "old");
        make(row.entries);
        EXPECT_EQ(zip_to_file(zip, beneath_folder(out), "a", {"f", abc, 3}), row.result) << &row - rows;
        EXPECT_EQ(is_bad_archive(row.result), row.result != 0);
        std::string now;
        ASSERT_EQ(calc_file_md5(out + "a/f", now), 0);
        EXPECT_EQ(now == abc, row.result == 0) << &row - rows;
        EXPECT_EQ(left_in_out(), 1);
    }
    std::filesystem::create_symlink(box.path(), out + "way");
    EXPECT_EQ(expand({good}), 0);
    EXPECT_EQ(zip_to_file(zip, beneath_folder(out), "way", {"f", abc}), err_leads_outside);
    EXPECT_EQ(zip_to_file(zip, beneath_folder(out), "none", {"f", abc}), ENOENT);
    EXPECT_FALSE(is_bad_archive(ENOENT) || is_bad_archive(err_leads_outside) || is_bad_archive(ENOSPC));
    EXPECT_FALSE(is_whole_archive(box.write("half", scratch::read(zip).substr(0, 30))));
    EXPECT_TRUE(is_whole_archive(zip));
    EXPECT_FALSE(scratch::exists(box / "f"));
}

TEST_F(archive, damage_anywhere_leaves_the_old_file_or_the_whole_new_one) {
    const std::string fresh = noise(300);
    make({{"f", fresh}});
    const std::string whole = scratch::read(zip);
    const auto is_safe = [&](const std::string& bytes) {
        std::filesystem::remove_all(out);
        box.write("out/f", "old");
        box.write("a.zip", bytes);
        const int err = expand();
        chmod((out + "f").c_str(), 0600);  // the damage may lie in the mode
        const std::string now = scratch::read(out + "f");
        return !scratch::exists(out + ".velaris.part") && (now == "old" || (err == 0 && now == fresh));
    };
    for (std::size_t at = 0; at < whole.size(); ++at) {
        EXPECT_TRUE(is_safe(whole.substr(0, at))) << "cut at " << at;
        std::string bytes = whole;
        bytes[at] = static_cast<char>(~bytes[at]);
        EXPECT_TRUE(is_safe(bytes)) << "turned at " << at;
    }
}

TEST_F(archive, each_damage_has_its_code) {
    box.write("out/f", "old");
    const auto expand_patched = [&](std::size_t at, char byte) {
        std::string bytes = scratch::read(zip);
        bytes[at] = bytes[bytes.find("PK\1\2") + at + 2] = byte;  // the same field in both headers, or data
        box.write("a.zip", bytes);
        return expand();
    };
    EXPECT_EQ(expand(), err_zip_open);
    make({{"f", std::string(1000, 'x')}});
    EXPECT_EQ(expand_patched(22 + 3, 0x70), err_zip_read) << "claims more than it holds";
    make({{"f", std::string(100, 'x'), plain_file, 0}});
    EXPECT_EQ(expand_patched(14, 0x11), UNZ_CRCERROR);
    EXPECT_EQ(scratch::read(out + "f"), "old");
    EXPECT_EQ(expand({{"no such folder/f", "x"}}), ENOENT);
    EXPECT_EQ(file_to_zip(box / "missing", box / "none.zip"), err_file_open);
    EXPECT_EQ(file_to_zip("/proc/self/mem", box / "none.zip"), EIO) << "as on a bad sector";
    EXPECT_FALSE(scratch::exists(box / "none.zip"));
    EXPECT_EQ(file_to_zip(out + "f", box / "no/folder.zip"), err_zip_create);
}

TEST_F(archive, a_file_that_changes_while_it_is_read_gives_no_zip) {
    const std::string source = box.write("f", std::string(1 << 20, 'x'));
    zipped_file facts;
    ASSERT_EQ(file_to_zip(source, zip, &facts), 0);
    std::string signature;
    ASSERT_EQ(calc_file_md5(source, signature), 0);
    EXPECT_EQ(facts.signature, signature);
    EXPECT_EQ(facts.bytes, 1u << 20);
    std::filesystem::resize_file(source, 64 << 20);
    std::atomic<bool> through = false;
    std::thread writer([&] {
        for (int i = 0; !through; ++i)
            std::filesystem::resize_file(source, (64u << 20) + static_cast<unsigned>(i % 1000));
    });
    EXPECT_EQ(file_to_zip(source, box / "none.zip", &facts), err_file_changed);
    through = true;
    writer.join();
    EXPECT_FALSE(scratch::exists(box / "none.zip"));
}

TEST_F(archive, a_full_disk_is_told_and_leaves_nothing_half_made) {
    const std::string source = box.write("big", noise(400000));
    ASSERT_EQ(file_to_zip(source, zip), 0);
    box.write("out/big", "old");
    let_no_file_grow_past(100000);
    EXPECT_EQ(expand(), EFBIG);
    EXPECT_EQ(file_to_zip(source, box / "b.zip"), EFBIG);
    EXPECT_EQ(scratch::read(out + "big"), "old");
    EXPECT_EQ(left_in_out(), 1);
    EXPECT_FALSE(scratch::exists(box / "b.zip"));
}

TEST_F(archive, an_entry_with_its_sizes_in_the_extra_field_is_read_whole) {
    const std::string bytes = noise(300000);
    const auto expand_marked = [&](int method, char added_size, char added_crc) {
        make({{"f", bytes, plain_file, method}});
        std::string z = scratch::read(zip);
        const std::size_t central = z.find("PK\1\2"), name_end = central + 46 + 1;
        const std::string extra =
            "\1\0\x10\0"s + z.substr(central + 24, 4) + "\0\0\0\0"s + z.substr(central + 20, 4) + "\0\0\0\0"s;
        z.replace(18, 8, 8, '\xff').replace(central + 20, 8, 8, '\xff').insert(name_end, extra);
        z[central + 30] = static_cast<char>(extra.size());
        z[name_end + 4] = static_cast<char>(z[name_end + 4] + added_size);
        z[14] = z[central + 16] = static_cast<char>(z[14] + added_crc);
        const std::size_t end = z.rfind("PK\5\6");
        z[end + 12] = static_cast<char>(z[end + 12] + 20);
        box.write("a.zip", z);
        return expand();
    };
    EXPECT_EQ(expand_marked(0, 0, 0), 0);
    EXPECT_TRUE(scratch::read(out + "f") == bytes);
    make({{"f", "old"}});
    expand();
    EXPECT_EQ(expand_marked(Z_DEFLATED, 1, 0), err_zip_read);
    EXPECT_EQ(expand_marked(Z_DEFLATED, -1, 0), err_zip_read);
    EXPECT_EQ(expand_marked(Z_DEFLATED, 0, 1), UNZ_CRCERROR);
    EXPECT_EQ(scratch::read(out + "f"), "old");
    EXPECT_EQ(expand_marked(Z_DEFLATED, 0, 0), 0);
    EXPECT_TRUE(scratch::read(out + "f") == bytes);
    EXPECT_EQ(left_in_out(), 1);
}
