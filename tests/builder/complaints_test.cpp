#include <gtest/gtest.h>

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
    {"no All", [](const reference& r) { r.remove("All"); }, "YOU IDIOT!\n!found_all_fold\n", 538},
    {"no Macintosh", [](const reference& r) { r.remove("Macintosh"); }, "\n!found_apl_fold\n", 539},
    {"no Windows", [](const reference& r) { r.remove("Windows"); }, "\n!found_win_fold\n", 540},
    {"no Linux", [](const reference& r) { r.remove("Linux"); }, "\n!found_X86_fold\n", 541},
    {"no Instructions", [](const reference& r) { r.remove("All/Instructions"); }, "\n!found_ins_fold\n", 542},
    {"no Weapons", [](const reference& r) { r.remove("All/Weapons"); }, "\n!found_wpn_fold\n", 543},
    {"no Airfoils", [](const reference& r) { r.remove("All/Airfoils"); }, "\n!found_afl_fold\n", 544},
    {"no Aircraft", [](const reference& r) { r.remove("All/Aircraft"); }, "\n!found_acf_fold\n", 545},
    {"no Resources", [](const reference& r) { r.remove("All/Resources"); }, "\n!found_res_fold\n", 546},
    {"no Output", [](const reference& r) { r.remove("All/Output"); }, "\n!found_out_fold\n", 547},
    {"no Custom Scenery", [](const reference& r) { r.remove("All/Custom Scenery"); }, "\n!found_cus_fold\n", 548},
    {"no plugins", [](const reference& r) { r.remove("All/Resources/plugins"); }, "\n!found_plug\t \n", 550},
    {"no menus", [](const reference& r) { r.remove("All/Resources/menus"); }, "\n!found_men_file\n", 554},
    {"a folder in place of the text",
     [](const reference& r) {
         r.remove("All/Resources/text/English/Velaris.txt");
         r.put("All/Resources/text/English/Velaris.txt/x", "");
     },
     "", 0},  // it has the look of a file, so it counts as met
    {"no text", [](const reference& r) { r.remove("All/Resources/text"); }, "\n!found_tex_file\n", 555},
    {"what must not be there", [](const reference& r) { r.put("All/Resources-UAH/ac_threat.dat", ""); },
     "What the hell is THIS doing in here!?!?!?\nResources-UAH/\n", 426},
    {"a strange folder in All", [](const reference& r) { r.put("All/Extras/x.txt", ""); }, "\nExtras/\n", 426},
    {"a file in All", [](const reference& r) { r.put("All/x.txt", ""); }, "I FOUND A FILE INSIDE THE 'ALL' FOLDER!",
     447},
    {"a link in All", [](const reference& r) { r.link("All/Aircraft2", "Aircraft"); }, "I FOUND A FILE", 447},
    {"a file beside All", [](const reference& r) { r.put("x.txt", ""); }, "none of the four top folders", 319},
    {"a fifth top folder", [](const reference& r) { r.put("Solaris/x.txt", ""); }, "\nSolaris/\nSolaris/x.txt\n", 319},
    {"a copy", [](const reference& r) { r.put("All/Weapons/Photocopy/x.wpn", ""); }, "found a copy file!\n", 438},
    {"a copy that would be left out", [](const reference& r) { r.put("All/Weapons/copy.bak", ""); },
     "found a copy file!", 438},
    {"a source", [](const reference& r) { r.put("Linux/main.cpp", ""); }, "found a .cpp file!\n", 439},
    {"a loud source", [](const reference& r) { r.put("Linux/MAIN.CPP", ""); }, "found a .CPP file!\n", 440},
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
         r.set_old("DIR All/a/\nFILE 0 0 1 0 0 0123 x\nFILE 0 0 1 0 0 4567 y\nFILE 0 0 1 0 0 89ab x\n");
     },
     "WARNING: you appear to have a file TWICE in an old directory file.\n\n\nAll/a/x\n", 520},
    {"a number used before",
     [](const reference& r) { r.set_old("DIR All/a/\nFILE 0 0 90001 0 0 0123 x\nFILE 0 0 90002 0 0 0123 x\n"); },
     "You idiot! I already have a version:\nversion_number 90001.000000\nin file \nAll/a/x\n", 526},
    {"a path without a folder", [](const reference& r) { r.set_old("FILE 0 0 1 0 0 0123 x\n"); },
     "Could not find the dir char!\nx\n", 180},
    {"no old directory",
     [](const reference& r) {
         r.set_old("");
         old_dir_path += "x";
     },
     "I could not read the old directory!\n", 513},
    {"a zip that is none",
     [](const reference& r) {
         r.set_old("");
         old_dir_path = r.room.write("old.zip", "PK");
     },
     "I could not read the old directory!\n", 513},
    {"an old directory of another kind",
     [](const reference& r) {
         r.set_old("");
         r.room.write("old.txt", "I\n901 version\nINSTALLER\n");
     },
     "So fix this.\n", 513},
    {"q", [](const reference&) { builder_front.stop_wanted = [] { return true; }; }, "You hit Q dumbass!\n", 173},
};

}  // namespace

TEST(complaints, each_fault_ends_the_run_by_its_name_and_leaves_no_release) {
    for (const complaint& it : complaints) {
        SCOPED_TRACE(it.what);
        const reference ref;
        it.spoil(ref);
        alert_catcher alerts;
        if (*it.text == '\0') {
            EXPECT_NO_THROW(build_install()) << alerts.last();
            continue;
        }
        EXPECT_THROW(build_install(), left);
        EXPECT_EQ(alerts.count(), 1u) << alerts.last();
        EXPECT_NE(alerts.last().find(it.text), std::string::npos) << alerts.last();
        if (it.line > 0) {
            EXPECT_NE(alerts.last().find("(Installer-f/make_installer line " + std::to_string(it.line) + ")"),
                      std::string::npos)
                << alerts.last();
        }
        EXPECT_FALSE(scratch::exists(ref.dst() + release_name));
        EXPECT_FALSE(scratch::exists(ref.dst() + release_name + ".unfinished/directory.txt.zip"));
    }
}

// The long work must not begin before the copy is known to be whole.
TEST(complaints, a_missing_landmark_is_found_before_anything_is_compressed) {
    const reference ref;
    alert_catcher alerts;
    ref.remove("All/Weapons");
    EXPECT_THROW(build_install(), left);
    EXPECT_FALSE(scratch::exists(ref.dst() + release_name + ".unfinished/All"));
}

TEST(complaints, an_output_folder_that_is_there_is_left_as_it_was) {
    for (const bool as_link : {false, true}) {
        const reference ref;
        alert_catcher alerts;
        if (as_link)
            std::filesystem::create_symlink("nowhere", ref.dst() + release_name);
        else
            ref.room.write("out/" + release_name + "/kept.txt", "kept");
        EXPECT_THROW(build_install(), left);
        EXPECT_NE(alerts.last().find("Could not make the target_folder!\n" + ref.made(release_name) +
                                     "\nTHIS MAY SIMPLY BE BECAUSE THE FOLDER ALREADY EXISTS THOUGH!\n\n"
                                     "(Installer-f/make_installer line 530)"),
                  std::string::npos)
            << alerts.last();
        if (!as_link) {
            EXPECT_EQ(scratch::read(ref.made(release_name) + "kept.txt"), "kept");
        }
    }
}
