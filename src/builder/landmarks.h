// landmarks.h: places that every reference copy has, by which a half-copied one is found out before anything is
// compressed. Each is matched exactly, as a whole path.
#pragma once

#include <string>

enum landmark_id {
    str_all_fold,
    str_apl_fold,
    str_win_fold,
    str_LIN_fold,
    str_ins_fold,
    str_wpn_fold,
    str_afl_fold,
    str_acf_fold,
    str_pfc_fold,
    str_res_fold,
    str_out_fold,
    str_cus_fold,
    str_plug,
    str_redt,
    str_orbt,
    str_erth1,
    str_erth2,
    str_mars,
    str_moon,
    str_men_file,
    str_tex_file,
    str_com_file,
    landmark_count
};

void set_landmarks();  // forms the paths from src_fold and forgets what was found
const std::string& landmark_path(landmark_id id);
void meet_landmark(const std::string& path);  // called with every item of the walk, a folder with its "/"
void check_landmarks();                       // fatal for the first that is missing, or that must not be there
