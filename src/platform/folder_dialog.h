// folder_dialog.h: the desktop's folder dialog, through whichever helper is installed (zenity or kdialog), without a
// shell. The helper runs beside the program; `keep_open` is called some times a second meanwhile, may be null, and
// closes the dialog, as a cancel, by returning false.
#pragma once

#include <string>

enum class folder_dialog_result { chosen, cancelled, no_helper };

bool folder_dialog_available();
// `chosen` has no final "/". A choice with ":", "\", CR or LF is a cancel, and so is a failure.
folder_dialog_result run_folder_dialog(const std::string& title, const std::string& start, std::string& chosen,
                                       bool (*keep_open)());
