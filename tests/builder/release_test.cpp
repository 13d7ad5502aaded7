#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <map>
#include <random>
#include <thread>

#include "builder/reference.h"
#include "files/md5.h"

namespace {

// What happens to one path over three releases, and the rows that each of them must list for it. A letter is a content,
// "" means that the file is not there; "2B" is a row that release 2 made for content B, "2X" a withdrawal.
struct story {
    const char* path;
    int platform;
    const char* contents[3];
    const char* rows[3];
};

const story stories[] = {
    {"All/Resources/same.txt", 0, {"A", "A", "A"}, {"1A", "2A", "3A"}},
    {"All/Resources/changed.txt", 0, {"A", "B", "C"}, {"1A", "1A 2B", "1A 2B 3C"}},
    {"All/Resources/changed back.txt", 0, {"A", "B", "A"}, {"1A", "1A 2B", "2B 3A"}},
    {"All/Weapons/gone.wpn", 0, {"A", "", ""}, {"1A", "1A 2X", "1A 2X"}},
    {"All/Weapons/back.wpn", 0, {"A", "", "A"}, {"1A", "1A 2X", "3A"}},
    {"All/Weapons/back and changed.wpn", 0, {"A", "", "B"}, {"1A", "1A 2X", "1A 3B"}},
    // A move to another top folder is one file gone and one new.
    {"All/Resources/moved.dat", 0, {"A", "", ""}, {"1A", "1A 2X", "1A 2X"}},
    {"Windows/Resources/moved.dat", 2, {"", "A", "A"}, {"", "2A", "3A"}},
    {"Macintosh/Resources/both.dat", 1, {"A", "A", "B"}, {"1A", "2A", "2A 3B"}},
    {"Linux/Resources/both.dat", 3, {"C", "C", "C"}, {"1C", "2C", "3C"}},
    // Plug-ins among the common files.
    {"All/Resources/plugins/QRNK.shlb", 1, {"A", "A", "A"}, {"1A", "2A", "3A"}},
    {"All/Resources/plugins/QRNK.framework/QRNK", 1, {"A", "B", "B"}, {"1A", "1A 2B", "1A 3B"}},
    {"All/Resources/plugins/Panelkit.so", 6, {"A", "B", ""}, {"1A", "1A 2B", "1A 2B 3X"}},
    {"All/Resources/plugins/PluginAdminLin.vlx", 6, {"A", "", "A"}, {"1A", "1A 2X", "3A"}},
    {"All/Resources/plugins/QRNK.so/All/Resources/plugins/QRNK.dll", 6, {"A", "A", "A"}, {"1A", "2A", "3A"}},
    {"All/Aircraft/QRNK.so", 0, {"A", "A", "A"}, {"1A", "2A", "3A"}},
    // Names that are hard to carry.
    {"All/Aircraft/Old Crow/Crow  2 (1956).acf", 0, {"A", "B", "B"}, {"1A", "1A 2B", "1A 3B"}},
    {"All/Aircraft/G\xe9\xff\x80/\xc5r.acf", 0, {"A", "", ""}, {"1A", "1A 2X", "1A 2X"}},
    {"All/Aircraft/900 version", 0, {"A", "A", "B"}, {"1A", "2A", "2A 3B"}},
    // "@" is a link; what it leads to does not count.
    {"Linux/start", 3, {"@Velaris", "@Velaris", "@bin/Velaris"}, {"1@", "2@", "2@ 3@"}},
    {"Linux/to a folder", 3, {"@.", "@.", ""}, {"1@", "2@", "2@ 3X"}},
    {"Windows/Velaris.exe", 2, {"E", "E", "F"}, {"1E", "2E", "2E 3F"}},
    // What a network release leaves out.
    {"All/Resources/work.old/thing.txt", 0, {"A", "B", ""}, {"", "", ""}},
    {"All/Resources/litter.bak", 0, {"A", "", "A"}, {"", "", ""}},
    {"All/Custom Scenery/-global terrain-/library.txt", 0, {"A", "A", "A"}, {"", "", ""}},
    {"All/Resources/.hidden/secret", 0, {"A", "A", "A"}, {"", "", ""}},
    // Landmarks.
    {"All/Resources/menus/English/Velaris.txt", 0, {"A", "A", "A"}, {"1A", "2A", "3A"}},
    {"All/Resources/text/English/Velaris.txt", 0, {"A", "A", "A"}, {"1A", "2A", "3A"}},
};

constexpr int large_address_aware_at = 64 + 22;  // behind the executable's first header

// "E" and "F" are Windows programs, which are mended on their way.
std::string bytes_of(const story& it, char content, bool mended) {
    if (content != 'E' && content != 'F')
        return std::string(1300u * static_cast<unsigned>(content - '@'), content) + it.path;
    std::string program =
        "MZ" + std::string(58, '\0') + std::string("\x40\0\0\0PE\0\0", 8) + std::string(20, '\0') + content;
    if (mended) program[large_address_aware_at] = 0x20;
    return program;
}

// The rows of each path of one release, told as in the stories.
using told = std::map<std::pair<std::string, int>, std::string>;  // by path and platform

told as_in_the_stories(int release) {
    told wanted;
    for (const story& it : stories)
        if (*it.rows[release - 1]) wanted[{it.path, it.platform}] = it.rows[release - 1];
    return wanted;
}

told as_in_the_catalogue() {
    told found;
    std::map<std::string, std::string> letters;
    for (const story& it : stories)
        for (const std::string content : it.contents)
            if (content.starts_with("@"))
                letters[it.path + md5_of(content.substr(1))] = "@";
            else if (!content.empty())
                letters[it.path + md5_of(bytes_of(it, content[0], true))] = content;
    for (const file_history_struct& history : sim_info) {
        std::string rows;
        for (const file_version_struct& row : history)
            rows += (rows.empty() ? "" : " ") + std::to_string(row.version - 90000) +
                    (row.sig_want == "GONE" ? "X" : letters[row.path + row.sig_want]);
        const std::pair key(history.front().path, history.back().platform);
        EXPECT_TRUE(found.emplace(key, rows).second) << "two histories of " << key.first;
    }
    return found;
}

void arrange(const reference& ref, int release) {
    for (const story& it : stories) {
        const std::string content = it.contents[release - 1];
        if (content.empty())
            ref.remove(it.path);
        else if (content[0] == '@')
            ref.link(it.path, content.substr(1));
        else
            ref.put(it.path, bytes_of(it, content[0], false));
    }
}

}  // namespace

TEST(release, three_in_a_row_carry_the_history_of_every_file) {
    const reference ref;
    alert_catcher alerts;
    for (int release = 1; release <= 3; ++release) {
        SCOPED_TRACE("release " + std::to_string(release));
        build.release_name = "Velaris 9.00 Beta-" + std::to_string(release);
        build.release_number = 90000 + release;
        arrange(ref, release);
        build_install();
        ASSERT_EQ(alerts.count(), static_cast<std::size_t>(release)) << alerts.last();
        EXPECT_NE(alerts.last().find("number " + std::to_string(build.release_number)), std::string::npos);

        const std::string text = ref.catalogue(build.release_name);
        ASSERT_EQ(read_catalogue(text, ""), 3);
        EXPECT_EQ(as_in_the_catalogue(), as_in_the_stories(release));

        build.first_release = 0;
        if (release == 1) {
            // An earlier builder shipped what is refused now: it leaves the catalogue without a word.
            build.old_dir_path =
                ref.room.write("old.txt", scratch::read(text) + "\nDIR All/Resources/\nFILE 0 0 89000 1 1 " +
                                              md5_of("x") + " shipped.bak\n");
        } else {
            build.old_dir_path = ref.made(build.release_name) + "directory.txt.zip";
        }
    }
}

TEST(release, catalogue_is_written_to_the_letter) {
    const reference ref;
    alert_catcher alerts;
    ref.put("All/Weapons/a.wpn", std::string(50999, 'a'));
    ref.put("All/Weapons/b.wpn", "");
    ref.put("Linux/b", std::string(50999, 'b'));
    ref.link("Linux/start", "b");  // measured as what it leads to
    ref.set_old(
        "DIR All/Weapons/\nFILE 0 0 80000 7 9 01230123012301230123012301230123 c.wpn\nDIR Linux/\nFILE 4 3 80000 16777 "
        "9 45674567456745674567456745674567 d\n");
    build_install();
    const std::string wanted = R"(I
900 version
INSTALLER


DIR All/Resources/menus/English/
FILE 0 0 90001 0 0 81ca0b7c951be89184c130d2860a5b00 Velaris.txt

DIR All/Resources/text/English/
FILE 0 0 90001 0 0 7ec7e6b76a52c44518d34604eac1fe3d Velaris.txt

DIR All/Weapons/
FILE 0 0 90001 0 50 4df7302ab7b47dfb8bd1c61b38cefe15 a.wpn
FILE 0 0 90001 0 0 d41d8cd98f00b204e9800998ecf8427e b.wpn

DIR Linux/
FILE 0 3 90001 0 50 c77c212c79286b8b64a5512472551e2d b
FILE 0 3 90001 0 50 92eb5ffee6ae2fec3ad71c777531578f start

DIR All/Weapons/
FILE 0 0 80000 7 9 01230123012301230123012301230123 c.wpn
FILE 0 0 90001 0 0 GONE c.wpn

DIR Linux/
FILE 4 3 80000 16777 9 45674567456745674567456745674567 d
FILE 4 3 90001 0 0 GONE d
)";
    EXPECT_EQ(scratch::read(ref.catalogue(build.release_name)), wanted);
}

// A program of the reference copy may be marked already, read-only, or share its bytes with a file outside.
TEST(release, marks_programs_in_the_reference_copy_and_nowhere_else) {
    const reference ref;
    alert_catcher alerts;
    const std::string plain = bytes_of({}, 'E', false), marked = bytes_of({}, 'E', true);
    const std::string outside = ref.room.write("outside.exe", plain);
    std::filesystem::create_hard_link(outside, ref.src() + "Windows/shared.exe");
    ref.put("Windows/marked.exe", marked);
    ref.link("Windows/link.exe", "no program.txt");
    ref.put("Windows/no program.txt", "text");
    ref.as_nobody(0444, "Windows/marked.exe");
    build_install();
    EXPECT_EQ(scratch::read(outside), plain);
    EXPECT_EQ(scratch::read(ref.src() + "Windows/shared.exe"), marked);
}

// A copy that is still being written: its bytes of one moment and its signature of another could never be installed.
TEST(release, a_file_that_goes_on_changing_ends_the_run) {
    const reference ref;
    alert_catcher alerts;
    std::string noise(8'000'000, '\0');  // so that it is long at work
    std::minstd_rand random;
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(random() >> 8); });
    ref.put("Linux/growing", noise);
    std::atomic<bool> over = false;
    std::thread writer([&] {
        for (std::ofstream file(ref.src() + "Linux/growing", std::ios::app); !over;)
            file << "more" << std::flush, std::this_thread::sleep_for(std::chrono::milliseconds(1));
    });
    EXPECT_THROW(build_install(), left);
    over = true;
    writer.join();
    EXPECT_NE(alerts.last().find("The file changed while I was reading it\n"), std::string::npos) << alerts.last();
}
