#include "builder/region.h"

#include "engine/directory.h"
#include "runtime/oops.h"

build_t build;

// Region 0 goes by the name of the release.
static const char* const reg_names[] = {"",     "South America", "USA",       "Canada",    "Africa", "Europe",
                                        "Asia", "Australia",     "West Mars", "East Mars", "Moon"};

void begin_region(int region) {
    static_cast<build_region&>(build) = build_region{};
    build.reg = region;
    build.sim_name = region_name(region);
    build.dst_folder = build.dst_fold_base;
    sim_info.clear();
}

std::string region_name(int region) {
    return region == 0 ? build.release_name : reg_names[region];
}

std::string unfinished_name(int region) {
    return region_name(region) + unfinished_ending;
}

std::string output_folder() {
    return build.dst_folder + unfinished_name(build.reg) + "/";
}

void build_fatal(const std::string& line1, const std::string& line2, const std::string& line3, const std::string& line4,
                 int line) {
    __MACIBM_alert(0, line1, line2, line3, line4, t_exit, "Installer-f/make_installer", line);
}
