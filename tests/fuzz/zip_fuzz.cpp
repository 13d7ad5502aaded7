// Expansion of an archive. Nothing may be written but below the folder it is given, and a failure leaves nothing half
// made.
#include <minizip/unzip.h>

#include <filesystem>

#include "files/zip_io.h"
#include "fuzz/fuzz.h"
#include "support/scratch.h"

namespace fs = std::filesystem;

namespace {

// The folder "out" stands between two others that must stay as they are.
struct ground {
    scratch folder;
    const std::string out = folder / "box/out/";

    ground() {
        let_no_file_grow_past(16u << 20);  // a few bytes may expand to a whole disk
        folder.write("box/beside", "untouched");
    }
    void clear() const {
        fs::remove_all(out);
        must(fs::create_directory(out), "the destination can be made");
    }
};

// What lies outside of `out`: everything by its name, the one file by its bytes.
std::string outside(const ground& g) {
    std::string all = scratch::read(g.folder / "box/beside");
    for (const std::string in : {"", "box"})
        for (const fs::directory_entry& one : fs::directory_iterator(g.folder / in))
            all += " " + one.path().string();
    return all;
}

bool leads_out(const std::string& name) {
    return name.starts_with("/") || ("/" + name + "/").find("/../") != std::string::npos;
}

// Whether an entry of the archive, read on its own, has a name that leads out.
bool has_bad_name(const std::string& path) {
    const unzFile zip = unzOpen64(path.c_str());
    bool bad = false;
    for (int at = zip ? unzGoToFirstFile(zip) : UNZ_ERRNO; at == UNZ_OK && !bad; at = unzGoToNextFile(zip)) {
        char name[400] = "";
        if (unzGetCurrentFileInfo64(zip, nullptr, name, sizeof name - 1, nullptr, 0, nullptr, 0) != UNZ_OK) break;
        bad = leads_out(name);
    }
    if (zip) unzClose(zip);
    return bad;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const ground g;
    static const std::string before = outside((g.clear(), g));
    const memory_file zip(view_of(data, size));
    survives([&] {
        const int result = zip_to_file(zip.path(), g.out, nullptr, 0);
        must(result != 0 || !has_bad_name(zip.path()), "a name that leads out is refused");
    });
    must(outside(g) == before, "nothing outside the destination changes");
    if (fs::is_empty(g.out)) return 0;
    for (const fs::directory_entry& one : fs::recursive_directory_iterator(g.out))
        must(one.path().filename() != ".velaris.part" || fs::is_directory(one.symlink_status()),
             "no half-made file stays");
    g.clear();
    return 0;
}
