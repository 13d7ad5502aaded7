#include "builder/landmarks.h"

#include "builder/region.h"
#include "runtime/product.h"

namespace {

enum need { required, on_discs, optional, forbidden };

struct landmark {
    landmark_id id;
    const char* below_src;
    need wanted;
    const char* complaint;  // second line of the alert, as support knows it
    int line;               // of the alert
};

// clang-format off
constexpr landmark landmarks[] = {
    {str_all_fold, "All/",                                           required,  "!found_all_fold", 538},
    {str_apl_fold, "Macintosh/",                                     required,  "!found_apl_fold", 539},
    {str_win_fold, "Windows/",                                       required,  "!found_win_fold", 540},
    {str_LIN_fold, "Linux/",                                         required,  "!found_X86_fold", 541},
    {str_ins_fold, "All/Instructions/",                              required,  "!found_ins_fold", 542},
    {str_wpn_fold, "All/Weapons/",                                   required,  "!found_wpn_fold", 543},
    {str_afl_fold, "All/Airfoils/",                                  required,  "!found_afl_fold", 544},
    {str_acf_fold, "All/Aircraft/",                                  required,  "!found_acf_fold", 545},
    {str_pfc_fold, "All/install_pfc Aircraft/",                      optional,  "",                0},
    {str_res_fold, "All/Resources/",                                 required,  "!found_res_fold", 546},
    {str_out_fold, "All/Output/",                                    required,  "!found_out_fold", 547},
    {str_cus_fold, "All/Custom Scenery/",                            required,  "!found_cus_fold", 548},
    {str_plug,     "All/Resources/plugins/",                         required,  "!found_plug\t ",  550},
    {str_redt,     "All/Resources/default scenery/900 red terrain/", on_discs,  "!found_redt\t ",  551},
    {str_orbt,     "All/Resources/bitmaps/Earth Orbit Textures/",    on_discs,  "!found_orbt\t ",  552},
    {str_erth1,    "All/Custom Scenery/-global overlays-",           optional,  "",                0},
    {str_erth2,    "All/Custom Scenery/-global terrain-",            optional,  "",                0},
    {str_mars,     "All/Custom Scenery/DSF 900 Mars World-Wide",     optional,  "",                0},
    {str_moon,     "All/Custom Scenery/DSF 900 Moon World-Wide",     optional,  "",                0},
    {str_men_file, "All/Resources/menus/English/Velaris.txt",        required,  "!found_men_file", 554},
    {str_tex_file, "All/Resources/text/English/Velaris.txt",         required,  "!found_tex_file", 555},
    {str_com_file, "All/Resources-UAH/ac_threat.dat",                forbidden, " found_com_file", 556},
};
// clang-format on
static_assert(sizeof landmarks / sizeof landmarks[0] == landmark_count);

// Of the region in work; set_landmarks begins it anew.
struct met_t {
    std::string path;
    bool found = false;
};
met_t marks[landmark_count];

}  // namespace

void set_landmarks() {
    for (const landmark& mark : landmarks) {
        marks[mark.id] = {build.src_fold + mark.below_src, false};
    }
}

const std::string& landmark_path(landmark_id id) {
    return marks[id].path;
}

void meet_landmark(const std::string& path) {
    for (met_t& mark : marks)
        if (mark.path == path) mark.found = true;
}

void check_landmarks() {
    for (const landmark& mark : landmarks) {
        const bool needed = mark.wanted == required || (mark.wanted == on_discs && is_dvd != 0);
        const bool found = marks[mark.id].found;
        if (found ? mark.wanted == forbidden : needed)
            build_fatal("YOU IDIOT!", mark.complaint, marks[mark.id].path, "", mark.line);
    }
}
