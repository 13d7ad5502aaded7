#include "engine/stg.h"

stg_t stg;

std::string temp_path;
std::string dvd_path;
std::string crnt_file_name, crnt_file_path;

void trim_dest_folder(std::string& path) {
    const std::size_t slash = path.find('/');
    if (slash != std::string::npos) path.erase(0, slash + 1);
}
