#include <gtest/gtest.h>
#include <sys/stat.h>

#include "builder/reference.h"

namespace {

// The run ends with one alert that holds `text`; with `line`, if it has a lasting one; and there is no release.
void expect_end(const reference& ref, const std::string& text, int line) {
    alert_catcher alerts;
    EXPECT_THROW(build_install(), left);
    EXPECT_EQ(alerts.count(), 1u) << alerts.last();
    EXPECT_NE(alerts.last().find(text), std::string::npos) << alerts.last();
    EXPECT_TRUE(line == 0 || alerts.seen.back().line == line) << alerts.last();
    const std::string unfinished = ref.dst() + build.release_name + ".unfinished/";
    EXPECT_FALSE(scratch::exists(ref.dst() + build.release_name));
    EXPECT_FALSE(scratch::exists(unfinished + "directory.txt.zip"));
    EXPECT_TRUE(scratch::exists(build.src_fold)) << "the reference copy is gone";
    // The long work must not begin before the copy is known to be whole and clean.
    EXPECT_FALSE(scratch::exists(unfinished + "All/Resources/menus/English/Velaris.txt.zip"));
}

}  // namespace

// What is put into the copy ("-" in front: taken out; with " -> ": a link), what the alert must hold, and its line.
TEST(complaints, about_the_copy) {
    const struct {
        std::vector<std::string> marks;
        const char* text;
        int line = 0;
    } copies[] = {
        {{"-All"}, "\n!found_all_fold\n", 538},
        {{"-Linux"}, "\n!found_X86_fold\n", 541},
        {{"-All/Weapons"}, "\n!found_wpn_fold\n", 543},
        {{"-All/Aircraft"}, "\n!found_acf_fold\n", 545},
        {{"-All/Resources/plugins"}, "\n!found_plug\t \n", 550},
        {{"-All/Resources/menus"}, "\n!found_men_file\n", 554},
        {{"-All/Resources/text"}, "\n!found_tex_file\n", 555},
        {{"All/Resources-UAH/ac_threat.dat"}, "What the hell is THIS doing in here!?!?!?\nResources-UAH/\n", 426},
        {{"All/x.txt"}, "I FOUND A FILE INSIDE THE 'ALL' FOLDER!", 447},
        {{"All/Aircraft2 -> Aircraft"}, "I FOUND A FILE", 447},
        {{"x.txt"}, "none of the four top folders", 319},
        {{"Solaris/x.txt"}, "\nSolaris/\nSolaris/x.txt\n", 319},
        {{"All/Weapons/Photocopy/x.wpn"}, "found a copy file!\n", 438},
        {{"Linux/main.cpp"}, "found a .cpp file!\n", 439},
        // Names that some system cannot have, or the catalogue.
        {{"Linux/Velaris "}, "You tried to include a file or directory with a space at the end!\n", 389},
        {{"Linux/bin /x"}, "with a space at the end!\n", 389},
        {{"Linux/a:b"}, "YOU IDIOT!\nfound a  : in the path!\n", 391},
        {{"Linux/a\\b"}, "YOU IDIOT!\nfound a \\ in the path!\n", 392},
        {{"Linux/a\nb"}, "found a line end in the path!\n"},
        {{"Linux/\tb"}, "found a name that begins with a blank!\n"},
        {{"All/Weapons/Aux.tar.gz/x"}, "Windows takes it for a device"},
        {{"All/Weapons/com1 .txt"}, "Windows takes it for a device"},
        {{"All/Weapons/what?"}, "Windows cannot have control characters"},
        {{"All/Weapons/what./x"}, "Windows drops the dot"},
        // What would be left out, and so withdrawn.
        {{"All/Aircraft/x.acf/y.txt"}, "x.acf\nIs a directory"},
        // One place for two.
        {{"All/Weapons/x", "Windows/Weapons/x"}, "installed at one path!\nAll/Weapons/x\nWindows/Weapons/x\n"},
        {{"All/Weapons/x", "Linux/Weapons/x/y"}, "installed at one path!\nAll/Weapons/x\nLinux/Weapons/x\n"},
        {{"All/Resources/plugins/QRNK.so", "Linux/Resources/plugins/QRNK.so"}, "would be installed at one path!\n"},
        {{"All/Weapons/\xc3\x84x", "All/Weapons/\xc3\xa4X"}, "differ in case alone!\nAll/Weapons/\xc3\x84x\n"},
        {{"All/Weapons/a", "Macintosh/weapons/b"}, "in case alone!\nAll/Weapons\nMacintosh/weapons\n"},
        // Links that lead out.
        {{"Linux/x -> /etc/hostname"}, "A link leads out"},
        {{"Linux/x -> y/../../All/Weapons"}, "A link leads out"},
        {{"Linux/a/b/x", "Linux/c/d/e -> ../../a", "Linux/c/x -> d/e/../../../y"}, "A link leads out"},
    };
    for (const auto& it : copies) {
        SCOPED_TRACE(it.marks.back());
        const reference ref;
        for (const std::string& mark : it.marks) {
            const std::size_t arrow = mark.find(" -> ");
            if (mark[0] == '-')
                ref.remove(mark.substr(1));
            else if (arrow != std::string::npos)
                ref.link(mark.substr(0, arrow), mark.substr(arrow + 4));
            else
                ref.put(mark, std::string(80, 'x'));
        }
        expect_end(ref, it.text, it.line);
    }
}

TEST(complaints, about_the_history) {
    const std::string row = " 0 0 01230123012301230123012301230123 x\n";
    const struct {
        std::string rows;
        const char* text;
        int line = 0;
    } histories[] = {
        {"DIR All/a/\nFILE 0 0 1" + row + "DIR All/b/\nFILE 0 0 1" + row + "DIR All/a/\nFILE 0 0 1" + row,
         "WARNING: you appear to have a file TWICE in an old directory file.\n\n\nAll/a/x\n", 520},
        {"DIR All/a/\nFILE 0 0 90001" + row + "FILE 0 0 90002" + row,
         "You idiot! I already have a version:\nversion_number 90001.000000\nin file \nAll/a/x\n", 526},
        {"DIR All/a/\nFILE 0 0 90002" + row, "This release: 90001, newest number in the history: 90002\n"},
        {"FILE 0 0 1" + row, "Could not find the dir char!\nx\n", 180},
        {"", "The old directory has no file in it!\n"},
        {"DIR All/a/\nFILE 0 0 1" + row.substr(0, row.size() - 1), "The old directory is cut"},
    };
    for (const auto& it : histories) {
        SCOPED_TRACE(it.text);
        const reference ref;
        ref.set_old(it.rows);
        expect_end(ref, it.text, it.line);
    }
}

TEST(complaints, about_what_else_can_be_wrong) {
    const struct {
        void (*spoil)(const reference&);
        const char* text;
        int line = 0;
    } cases[] = {
        {[](const reference& r) { r.as_nobody(0, "Linux"); }, "I could not list a folder of the reference copy!\n"},
        {[](const reference& r) { r.as_nobody(0, "All/Resources/text/English/Velaris.txt"); },
         "English/Velaris.txt\nPermission denied"},
        {[](const reference& r) { mkfifo((r.src() + "Linux/pipe").c_str(), 0600); }, "Linux/pipe\nThis is no file"},
        {[](const reference& r) {
             std::filesystem::rename(r.src(), r.room / "work.old");
             build.src_fold = r.room / "work.old/";
         },
         "It holds 'work.'"},
        {[](const reference& r) {
             build.src_fold = r.dst() + build.release_name + ".unfinished/";
             std::filesystem::rename(r.src(), build.src_fold);
         },
         "lies where the builder does its work!\n"},
        {[](const reference& r) {
             r.set_old("DIR All/a/\nFILE 0 0 1 0 0 01230123012301230123012301230123 x\n");
             const std::string inside = "out/" + build.release_name + ".unfinished/old.txt";
             build.old_dir_path = r.room.write(inside, scratch::read(build.old_dir_path));
         },
         "lies where the builder does its work!\n"},
        {[](const reference& r) { r.put("../out/" + build.release_name + ".unfinished/mine", ""); },
         "Something that the builder did not make is in its way!\n"},
        {[](const reference& r) {
             r.set_old("");
             build.old_dir_path = r.room.write("old.zip", "PK");
         },
         "I could not read the old directory!\n", 513},
        {[](const reference& r) {
             r.set_old("");
             r.room.write("old.txt", "I\n901 version\nINSTALLER\n");
         },
         "So fix this.\n", 513},
    };
    for (const auto& it : cases) {
        SCOPED_TRACE(it.text);
        const reference ref;
        it.spoil(ref);
        expect_end(ref, it.text, it.line);
    }
}
