#include "builder/compress.h"

#include <sys/stat.h>

#include <cstdint>

#include "builder/classify.h"
#include "builder/history.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/md5.h"
#include "files/zip_io.h"
#include "runtime/hl_string.h"
#include "runtime/oops.h"
#include "runtime/product.h"

// Thousands of bytes, cut. A link counts as what it leads to, 0 where that is no file.
static std::int64_t kilobytes_of(const std::string& path) {
    struct stat facts;
    return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) ? facts.st_size / 1000 : 0;
}

void comp_file(const std::string& path) {
    crnt_file_path = path;
    const std::string rel = path.substr(build.src_fold.size());
    std::string dir;
    get_path_with_path(dir, rel);
    const std::string name = get_path_with_path_file;

    if (path.find(landmark_path(str_win_fold)) != std::string::npos && path.find(".exe") != std::string::npos)
        if (const int err = make_file_large_address_aware(path))
            build_fatal("Oops! We could not make a windows exe file large-address-aware!", float_text("error# ", err),
                        path, "", 260);
    const std::string zip = output_folder() + rel + ".zip";
    if (const int err = file_to_zip(path, zip)) build_fatal("I could not zip a file!", error_str(err), path, zip, 292);
    const std::int64_t zip_size = kilobytes_of(zip);
    build.zip_size_ins += static_cast<double>(zip_size) * 0.001 * 0.001;

    file_version_struct row;
    row.disc_set = is_dvd;
    row.version = build.release_number;
    row.zip_size = static_cast<float>(zip_size);
    row.ext_size = static_cast<float>(kilobytes_of(path));
    // Should the file become unreadable between its compression and this, its row still needs a signature: one that no
    // file has, so that no copy of it is taken for the right one.
    row.sig_want = std::string(32, '0');
    if (calc_file_md5(path, row.sig_want))
        __MACIBM_alert(0, "Could not MD5 file!", path, "", "", t_alert, "Installer-f/make_installer", 302);
    write_folder_line(dir);
    row.platform = file_platform(path, rel);

    std::string key = rel;
    chop_platform(key, row.platform);
    write_file_rows(key, name, row);
    ++build.num_files_com;
    report_compression(zip);
}
