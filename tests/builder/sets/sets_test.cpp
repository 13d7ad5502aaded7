// Runs once for each edition: what goes into which set, and into which region of it.
#include <gtest/gtest.h>

#include "builder/classify.h"
#include "builder/reference.h"

namespace {

struct expectation {
    const char* path;
    const char* sets;  // digits of the sets that take it; a scenery set is asked for the region that the tile lies in
};

const expectation expectations[] = {
    {"All/Aircraft/a.acf", "01"},
    {"All/Aircraft/a.ac", ""},
    {"All/Aircraft/a.acx", "01"},
    {"All/Aircraft/film.mov.txt", "01"},
    {"All/Aircraft/old.bak", ""},
    {"All/Aircraft/old.bak/new.txt", "01"},
    {"All/Output/FMS plans/a.fms", ""},
    {"All/Output/preferences/a.prf", ""},
    {"All/Output/Velaris Pilot.txt", ""},
    {"All/Resources/Thumbs.db/x", ""},
    {"All/Resources/a.DS_Store", ""},
    {"Macintosh/Velaris.xSYM/a", ""},
    {"Windows/works/workers.txt", "01"},
    {"Windows/work.txt", ""},
    {"Windows/homework.d/a.txt", ""},
    {"All/install_pfc Aircraft/a.acf", ""},
    {"All/Resources/default scenery/900 red terrain/a.png", "1"},
    {"All/Resources/bitmaps/Earth Orbit Textures/a.png", "1"},
    {"All/Custom Scenery/-global overlays-/Earth nav data/+40-120/+40-120.dsf", "2"},
    {"All/Custom Scenery/-global terrain-/Earth nav data/+40-120/+40-120.dsf", "2"},
    {"All/Custom Scenery/-global terrain-/Earth nav data/+40-120/+40-120.dsf.txt", ""},
    // No tile of another world lies in a region of the earth, and regions of their own they have none.
    {"All/Custom Scenery/DSF 900 Mars World-Wide/Earth nav data/+40-120.dsf", ""},
};

const char* const terrain = "All/Custom Scenery/-global terrain-/Earth nav data/";

}  // namespace

// A region of the set that the tile at 40 north, 120 west could lie in.
constexpr int tile_regions[] = {0, 0, 2, 8, 10};
constexpr int last_region[] = {0, 0, 7, 9, 10};

TEST(sets, each_takes_what_belongs_to_it) {
    const reference ref;
    for (const expectation& it : expectations) {
        build.reg = tile_regions[is_dvd];
        const bool wanted = std::string(it.sets).find(static_cast<char>('0' + is_dvd)) != std::string::npos;
        EXPECT_EQ(is_good_file(ref.src() + it.path, 0, 0), wanted) << it.path;
        EXPECT_FALSE(is_good_file(ref.src() + it.path, 0, 1)) << "is not there: " << it.path;
        if (is_dvd < 2) continue;
        ++build.reg;
        EXPECT_FALSE(is_good_file(ref.src() + it.path, 0, 0)) << "in another region: " << it.path;
    }
}

TEST(sets, each_is_cut_into_its_regions) {
    static std::string built;
    const reference ref;
    alert_catcher alerts;
    builder_front.finished = [](const release_summary& sum) {
        built += sum.name + ":" + std::to_string(sum.files) + " ";
    };
    for (const char* tile : {"-10-060.dsf", "+40-120.dsf", "+40-121.dsf", "+60-100.dsf", "+00+020.dsf", "+50+010.dsf",
                             "+30+080.dsf", "+35+139.dsf", "-34+151.dsf"})
        ref.put(std::string(terrain) + tile, "tile");
    build_install();
    const char* const wanted[] = {"Velaris 9.00 Beta-1:2 ", "Velaris 9.00 Beta-1:4 ",
                                  "South America:1 USA:2 Canada:1 Africa:1 Europe:1 Asia:1 Australia:2 ",
                                  "West Mars:0 East Mars:0 ", "Moon:0 "};
    EXPECT_EQ(built, wanted[is_dvd]);
    EXPECT_EQ(scratch::exists(ref.made("USA") + terrain + "+40-121.dsf.zip"), is_dvd == 2);

    ASSERT_EQ(read_catalogue(ref.catalogue(region_name(last_region[is_dvd])), ""), 3);
    for (const file_history_struct& history : sim_info)
        EXPECT_EQ(history.back().disc_set, is_dvd);
}

// Six regions of seven would look like a set.
TEST(sets, a_fault_in_the_last_region_leaves_none) {
    const reference ref;
    alert_catcher alerts;
    builder_front.stop_wanted = [] { return build.reg == last_region[is_dvd] ? stop_wish::by_q : stop_wish::none; };
    EXPECT_THROW(build_install(), left);
    for (int region = 0; region <= 10; ++region)
        EXPECT_FALSE(scratch::exists(ref.dst() + region_name(region)));
}

TEST(sets, a_disc_has_no_history_and_needs_the_large_textures) {
    static int withdrawn = 0;
    const reference ref;
    alert_catcher alerts;
    builder_front.finished = [](const release_summary& sum) { withdrawn += sum.tally.withdrawn; };
    ref.set_old("DIR All/Weapons/\nFILE 0 0 80000 0 0 01230123012301230123012301230123 gone.wpn\n");
    if (is_dvd == 2) {
        EXPECT_THROW(build_install(), left) << "a set of scenery without a tile";
    }
    ref.put(std::string(terrain) + "+40-120.dsf", "tile");
    build_install();
    EXPECT_EQ(withdrawn, is_dvd == 0 ? 1 : 0);

    const reference other;
    other.remove("All/Resources/bitmaps");
    if (is_dvd == 0)
        EXPECT_NO_THROW(build_install()) << alerts.last();
    else
        EXPECT_THROW(build_install(), left);
}
