// reference.h: a reference copy with all its landmarks and a place for releases, for one test.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "builder/build.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/directory.h"
#include "engine/examine.h"
#include "files/zip_io.h"
#include "runtime/product.h"
#include "support/alerts.h"
#include "support/scratch.h"

class reference {
  public:
    reference() {
        for (const char* folder : {"All/Instructions", "All/Weapons", "All/Airfoils", "All/Aircraft", "All/Output",
                                   "All/Custom Scenery", "All/Resources/plugins", "Macintosh", "Windows", "Linux"})
            std::filesystem::create_directories(src() + folder);
        put("All/Resources/menus/English/Velaris.txt", "menus");
        put("All/Resources/text/English/Velaris.txt", "texts");
        if (is_dvd != 0) {
            put("All/Resources/default scenery/900 red terrain/rust.png", "red");
            put("All/Resources/bitmaps/Earth Orbit Textures/blue.png", "blue");
        }
        std::filesystem::create_directories(dst());
        build.src_fold = src();
        build.dst_fold_base = dst();
        build.release_name = "Velaris 9.00 Beta-1";
        build.release_number = 90001;
        build.first_release = 1;
        build.old_dir_path.clear();
        builder_front.stop_wanted = [] { return stop_wish::none; };
        set_landmarks();
    }

    std::string src() const { return room / "ref/"; }
    std::string dst() const { return room / "out/"; }
    std::string made(const std::string& name) const { return dst() + name + "/"; }
    void put(const std::string& path, const std::string& bytes) const { room.write("ref/" + path, bytes); }
    void link(const std::string& path, const std::string& target) const {
        std::filesystem::create_directories(std::filesystem::path(src() + path).parent_path());
        std::filesystem::remove(src() + path);
        std::filesystem::create_symlink(target, src() + path);
    }
    void remove(const std::string& path) const { std::filesystem::remove_all(src() + path); }

    // Takes `path` the rights that are not in `mode`, and the test its own, for root passes over all of them.
    void as_nobody(unsigned mode, const std::string& path) const {
        constexpr unsigned nobody = 65534;
        std::filesystem::permissions(src() + path, std::filesystem::perms(mode));
        if (geteuid() != 0) return;
        EXPECT_EQ(chown(room.path().c_str(), nobody, nobody), 0);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(room.path()))
            EXPECT_EQ(lchown(entry.path().c_str(), nobody, nobody), 0);
        EXPECT_EQ(seteuid(nobody), 0);
    }
    ~reference() { EXPECT_EQ(seteuid(getuid()), 0); }

    // The catalogue of a release of that name, as text beside the releases. Empty when it cannot be had.
    std::string catalogue(const std::string& name) const {
        std::string entry = name + ".txt";
        if (zip_to_file(made(name) + "directory.txt.zip", room.path(), &entry, 1)) return {};
        return room / (name + ".txt");
    }
    // Makes `rows` the history of the next release.
    void set_old(const std::string& rows) const {
        build.first_release = 0;
        build.old_dir_path = room.write("old.txt", "I\n900 version\nINSTALLER\n\n" + rows);
    }

    scratch room;
};
