#include "builder/region.h"

#include "engine/directory.h"
#include "runtime/oops.h"
#include "runtime/product.h"

std::string old_dir_path;
int first_release = 0;
std::string src_fold;
std::string dst_fold_base;
std::string release_name;
int release_number = version_number;

int reg = 0;
std::string sim_name = "-";
std::string dst_folder;
std::string prev_dir = "---";
std::vector<std::string> comp_files;
std::set<std::string> comp_paths;
std::map<std::string, int> sim_info_index;
int num_files_rec = 0, num_files_use = 0, num_files_com = 0;
double zip_size_ins = 0;
tally_t tally;

// Region 0 goes by the name of the release.
static const char* const reg_names[] = {"",     "South America", "USA",       "Canada",    "Africa", "Europe",
                                        "Asia", "Australia",     "West Mars", "East Mars", "Moon"};

void reset_region() {
    zip_size_ins = 0;
    prev_dir = "---";
    num_files_rec = num_files_use = num_files_com = 0;
    comp_paths.clear();
    comp_files.clear();
    sim_info.clear();
    sim_info_index.clear();
    tally = tally_t{};
}

std::string region_name(int region) {
    return region == 0 ? release_name : reg_names[region];
}

std::string unfinished_name(int region) {
    return region_name(region) + ".unfinished";
}

std::string output_folder() {
    return dst_folder + unfinished_name(reg) + "/";
}

void build_fatal(const std::string& line1, const std::string& line2, const std::string& line3, const std::string& line4,
                 int line) {
    __MACIBM_alert(0, line1, line2, line3, line4, t_exit, "Installer-f/make_installer", line);
}
