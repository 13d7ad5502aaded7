#include "builder/compress.h"

#include <sys/stat.h>

#include <cstdint>
#include <filesystem>

#include "builder/classify.h"
#include "builder/history.h"
#include "builder/landmarks.h"
#include "builder/region.h"
#include "builder/report.h"
#include "engine/stg.h"
#include "files/error_str.h"
#include "files/io_utils.h"
#include "files/zip_io.h"
#include "runtime/hl_string.h"
#include "runtime/oops.h"
#include "runtime/product.h"

// Thousands of bytes, cut. A link counts as what it leads to, 0 where that is no file.
static std::int64_t kilobytes_of(const std::string& path) {
    struct stat facts;
    return stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) ? facts.st_size / 1000 : 0;
}

// The file may bear other names, outside the reference copy, as in a tree that was made of hard links. What is mended
// here must not change there.
static void own_bytes(const std::string& path) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (fs::hard_link_count(path, error) < 2 || error) return;
    const std::string copy =
        (fs::path(path).parent_path() / ".velaris-builder").string();  // hidden, so never published
    if (fs::copy_file(path, copy, fs::copy_options::overwrite_existing, error)) fs::rename(copy, path, error);
    if (error)
        __MACIBM_alert(0, "I could not give the reference copy a file of its own!", path, error.message(), "", t_exit,
                       OOPS_PLACE);
}

void comp_file(const std::string& path) {
    crnt_file_path = path;
    const std::string rel = path.substr(build.src_fold.size());
    std::string dir;
    get_path_with_path(dir, rel);
    const std::string name = get_path_with_path_file;

    const bool is_link = is_sim_link(path, nullptr);
    // A link has no bytes of its own to mark; the program that it leads to comes by itself.
    if (path.find(landmark_path(str_win_fold)) != std::string::npos && path.find(".exe") != std::string::npos &&
        !is_link) {
        own_bytes(path);
        if (const int code = make_file_large_address_aware(path))
            build_fatal("Oops! We could not make a windows exe file large-address-aware!", float_text("error# ", code),
                        path, "", 260);
    }
    const std::string zip = output_folder() + rel + ".zip";
    // The signature is of the bytes that went into the zip, whatever becomes of the file. One that changes meanwhile, as
    // under a copy that is still running, gets a few more chances to come to rest.
    zipped_file went_in;
    int err = err_file_changed;
    for (int tries = 3; err == err_file_changed && tries > 0; --tries)
        err = file_to_zip(path, zip, &went_in);
    if (err) build_fatal("I could not zip a file!", error_str(err), path, zip, 292);
    const std::int64_t zip_size = kilobytes_of(zip);
    build.zip_bytes += static_cast<std::int64_t>(std::filesystem::file_size(zip));
    build.zip_size_ins += static_cast<double>(zip_size) * 0.001 * 0.001;

    file_version_struct row;
    row.disc_set = is_dvd;
    row.version = build.release_number;
    row.zip_size = static_cast<float>(zip_size);
    row.ext_size = static_cast<float>(is_link ? kilobytes_of(path) : static_cast<std::int64_t>(went_in.bytes / 1000));
    row.sig_want = went_in.signature;
    write_folder_line(dir);
    row.platform = file_platform(path, rel);

    std::string key = rel;
    chop_platform(key, row.platform);
    write_file_rows(key, name, row);
    ++build.num_files_com;
    report_compression(zip);
}
