#include <gtest/gtest.h>
#include <sys/stat.h>

#include "builder/reference.h"

namespace {

// Something wrong with the copy, the old directory or the output, and what the alert must hold.
struct complaint {
    const char* what;
    void (*spoil)(const reference&);
    const char* text;
    int line;
};

const complaint complaints[] = {
    {"no All", [](const reference& r) { r.remove("All"); }, "\n!found_all_fold\n", 538},
    {"no Linux", [](const reference& r) { r.remove("Linux"); }, "\n!found_X86_fold\n", 541},
    {"no All/Weapons", [](const reference& r) { r.remove("All/Weapons"); }, "\n!found_wpn_fold\n", 543},
    {"no All/Aircraft", [](const reference& r) { r.remove("All/Aircraft"); }, "\n!found_acf_fold\n", 545},
    {"no All/Resources/plugins", [](const reference& r) { r.remove("All/Resources/plugins"); }, "\n!found_plug\t \n",
     550},
    {"no All/Resources/menus", [](const reference& r) { r.remove("All/Resources/menus"); }, "\n!found_men_file\n", 554},
    {"no All/Resources/text", [](const reference& r) { r.remove("All/Resources/text"); }, "\n!found_tex_file\n", 555},
    {"a folder that cannot be listed",
     [](const reference& r) {
         r.put("Linux/closed/x", "");
         r.as_nobody(0, "Linux/closed");
     },
     "I could not list a folder of the reference copy!\n", -1},
    {"a file that cannot be opened",
     [](const reference& r) {
         r.put("Linux/closed", "");
         r.as_nobody(0, "Linux/closed");
     },
     "Linux/closed\nPermission denied", -1},
    {"a pipe", [](const reference& r) { mkfifo((r.src() + "Linux/pipe").c_str(), 0600); },
     "Linux/pipe\nThis is no file", -1},
    {"a folder with the ending of a file", [](const reference& r) { r.put("All/Aircraft/x.acf/y.txt", ""); },
     "x.acf\nIs a directory", -1},
    {"one path for all and for one system",
     [](const reference& r) {
         r.put("All/Weapons/x", "");
         r.put("Windows/Weapons/x", "");
     },
     "would be installed at one path!\nAll/Weapons/x\nWindows/Weapons/x\n", -1},
    {"a file for all where one system has a folder",
     [](const reference& r) {
         r.put("All/Weapons/x", "");
         r.put("Linux/Weapons/x/y", "");
     },
     "would be installed at one path!\nAll/Weapons/x\nLinux/Weapons/x\n", -1},
    {"one path for Linux in two places",
     [](const reference& r) {
         r.put("All/Resources/plugins/QRNK.so", "");
         r.put("Linux/Resources/plugins/QRNK.so", "");
     },
     "would be installed at one path!\n", -1},
    {"twins in case",
     [](const reference& r) {
         r.put("All/Weapons/\xc3\x84x.wpn", "");
         r.put("All/Weapons/\xc3\xa4X.wpn", "");
     },
     "differ in case alone!\nAll/Weapons/\xc3\x84x.wpn\n", -1},
    {"twins in case of folders",
     [](const reference& r) {
         r.put("All/Weapons/a", "");
         r.put("Macintosh/weapons/b", "");
     },
     "differ in case alone!\nAll/Weapons\nMacintosh/weapons\n", -1},
    {"a device", [](const reference& r) { r.put("All/Weapons/Aux.tar.gz/x", ""); }, "Windows takes it for a device",
     -1},
    {"a sign that Windows cannot have", [](const reference& r) { r.put("All/Weapons/what?", ""); },
     "Windows cannot have control characters", -1},
    {"a dot at the end", [](const reference& r) { r.put("All/Weapons/what./x", ""); }, "Windows drops the dot", -1},
    {"a link to anywhere", [](const reference& r) { r.link("Linux/x", "/etc/hostname"); }, "A link leads out", -1},
    {"a link over the top", [](const reference& r) { r.link("Linux/x", "y/../../All/Weapons"); }, "A link leads out",
     -1},
    {"a link out by another link",
     [](const reference& r) {
         r.put("Linux/a/b/x", "");
         r.link("Linux/c/d/e", "../../a");
         r.link("Linux/c/x", "d/e/../../../y");
     },
     "A link leads out of the reference copy!\n", -1},
    {"a reference whose path hides its files",
     [](const reference& r) {
         std::filesystem::rename(r.src(), r.room / "work.old");
         build.src_fold = r.room / "work.old/";
     },
     "It holds 'work.'", -1},
    {"the reference where the work is done",
     [](const reference& r) {
         build.src_fold = r.dst() + build.release_name + ".unfinished/";
         std::filesystem::rename(r.src(), build.src_fold);
     },
     "lies where the builder does its work!\n", -1},
    {"a folder that no builder made",
     [](const reference& r) { r.put("../out/" + build.release_name + ".unfinished/mine", ""); },
     "Something that the builder did not make is in its way!\n", -1},
    {"a history without rows", [](const reference& r) { r.set_old(""); }, "The old directory has no file in it!\n", -1},
    {"a history that is cut",
     [](const reference& r) { r.set_old("DIR All/a/\nFILE 0 0 1 0 0 01230123012301230123012301230123 x"); },
     "The old directory is cut", -1},
    {"a number below that of the history",
     [](const reference& r) { r.set_old("DIR All/a/\nFILE 0 0 90002 0 0 01230123012301230123012301230123 x\n"); },
     "This release: 90001, newest number in the history: 90002\n", -1},
    {"what must not be there", [](const reference& r) { r.put("All/Resources-UAH/ac_threat.dat", ""); },
     "What the hell is THIS doing in here!?!?!?\nResources-UAH/\n", 426},
    {"a file in All", [](const reference& r) { r.put("All/x.txt", ""); }, "I FOUND A FILE INSIDE THE 'ALL' FOLDER!",
     447},
    {"a link in All", [](const reference& r) { r.link("All/Aircraft2", "Aircraft"); }, "I FOUND A FILE", 447},
    {"a file beside All", [](const reference& r) { r.put("x.txt", ""); }, "none of the four top folders", 319},
    {"a fifth top folder", [](const reference& r) { r.put("Solaris/x.txt", ""); }, "\nSolaris/\nSolaris/x.txt\n", 319},
    {"a copy", [](const reference& r) { r.put("All/Weapons/Photocopy/x.wpn", ""); }, "found a copy file!\n", 438},
    {"a source", [](const reference& r) { r.put("Linux/main.cpp", ""); }, "found a .cpp file!\n", 439},
    {"a blank at the end", [](const reference& r) { r.put("Linux/Velaris ", ""); },
     "You tried to include a file or directory with a space at the end!\n", 389},
    {"a folder with a blank at the end", [](const reference& r) { r.put("Linux/bin /x", ""); },
     "with a space at the end!\n", 389},
    {"a colon", [](const reference& r) { r.put("Linux/a:b", ""); }, "YOU IDIOT!\nfound a  : in the path!\n", 391},
    {"a backslash", [](const reference& r) { r.put("Linux/a\\b", ""); }, "YOU IDIOT!\nfound a \\ in the path!\n", 392},
    {"a line end", [](const reference& r) { r.put("Linux/a\nb", ""); }, "found a line end in the path!\n", -1},
    {"a blank at the start", [](const reference& r) { r.put("Linux/\tb", ""); },
     "found a name that begins with a blank!\n", -1},
    {"a program that is none", [](const reference& r) { r.put("Windows/x.exe", std::string(80, 'x')); },
     "Oops! We could not make a windows exe file large-address-aware!\nerror# 20013.000000\n", 260},
    {"a name too long for a zip", [](const reference& r) { r.put("Linux/" + std::string(252, 'x'), ""); },
     "I could not zip a file!\nWe were unable to create a zip file\n", 292},
    {"a path listed twice",
     [](const reference& r) {
         r.set_old(
             "DIR All/a/\nFILE 0 0 1 0 0 01230123012301230123012301230123 x\nFILE 0 0 1 0 0 "
             "45674567456745674567456745674567 y\nFILE 0 0 1 0 0 89ab89ab89ab89ab89ab89ab89ab89ab x\n");
     },
     "WARNING: you appear to have a file TWICE in an old directory file.\n\n\nAll/a/x\n", 520},
    {"a number used before",
     [](const reference& r) {
         r.set_old(
             "DIR All/a/\nFILE 0 0 90001 0 0 01230123012301230123012301230123 x\nFILE 0 0 90002 0 0 "
             "01230123012301230123012301230123 x\n");
     },
     "You idiot! I already have a version:\nversion_number 90001.000000\nin file \nAll/a/x\n", 526},
    {"a path without a folder",
     [](const reference& r) { r.set_old("FILE 0 0 1 0 0 01230123012301230123012301230123 x\n"); },
     "Could not find the dir char!\nx\n", 180},
    {"a zip that is none",
     [](const reference& r) {
         r.set_old("");
         build.old_dir_path = r.room.write("old.zip", "PK");
     },
     "I could not read the old directory!\n", 513},
    {"an old directory of another kind",
     [](const reference& r) {
         r.set_old("");
         r.room.write("old.txt", "I\n901 version\nINSTALLER\n");
     },
     "So fix this.\n", 513},
    {"q", [](const reference&) { builder_front.stop_wanted = [] { return stop_wish::by_q; }; }, "You hit Q dumbass!\n",
     173},
    {"Ctrl-C", [](const reference&) { builder_front.stop_wanted = [] { return stop_wish::by_signal; }; },
     "The build was interrupted.\n", -1},
};

}  // namespace

TEST(complaints, each_fault_ends_the_run_by_its_name_and_leaves_no_release) {
    for (const complaint& it : complaints) {
        SCOPED_TRACE(it.what);
        const reference ref;
        it.spoil(ref);
        alert_catcher alerts;
        EXPECT_THROW(build_install(), left);
        EXPECT_EQ(alerts.count(), 1u) << alerts.last();
        EXPECT_NE(alerts.last().find(it.text), std::string::npos) << alerts.last();
        if (it.line > 0) {
            EXPECT_EQ(alerts.seen.back().line, it.line) << alerts.last();
        }
        EXPECT_FALSE(scratch::exists(ref.dst() + build.release_name));
        EXPECT_TRUE(scratch::exists(build.src_fold));
        EXPECT_FALSE(scratch::exists(ref.dst() + build.release_name + ".unfinished/directory.txt.zip"));
        // The long work must not begin before the copy is known to be whole.
        const bool found_at_work = it.line == 260 || it.line == 292;
        EXPECT_EQ(
            scratch::exists(ref.dst() + build.release_name + ".unfinished/All/Resources/menus/English/Velaris.txt.zip"),
            found_at_work);
    }
}
