#include "builder/copy_check.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "builder/classify.h"
#include "builder/region.h"
#include "files/io_utils.h"
#include "files/xmap.h"
#include "runtime/oops.h"

namespace fs = std::filesystem;

namespace {

constexpr const char* insult = "YOU IDIOT!";

// Windows opens the device for each of these, in any case and with any ending.
constexpr std::string_view devices[] = {"con",  "prn",  "aux",  "nul",  "conin$", "conout$", "com1", "com2",
                                        "com3", "com4", "com5", "com6", "com7",   "com8",    "com9", "lpt1",
                                        "lpt2", "lpt3", "lpt4", "lpt5", "lpt6",   "lpt7",    "lpt8", "lpt9"};

// Of Latin, Greek and Cyrillic letters, which is where a release has two cases at all. Both spellings of a pair give
// one text; it is for comparing alone.
std::string without_case(std::string_view text) {
    std::string folded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto first = static_cast<unsigned char>(text[i]);
        const auto second = i + 1 < text.size() ? static_cast<unsigned char>(text[i + 1]) : 0u;
        if (first < 0xc3 || first > 0xd1 || (second & 0xc0) != 0x80) {
            folded += first >= 'A' && first <= 'Z' ? static_cast<char>(first + 32) : text[i];
            continue;
        }
        unsigned letter = (first & 0x1fu) << 6 | (second & 0x3fu);
        if ((letter >= 0xc0 && letter <= 0xde && letter != 0xd7) || (letter >= 0x391 && letter <= 0x3a9) ||
            (letter >= 0x410 && letter <= 0x42f))
            letter += 32;
        else if (letter >= 0x400 && letter <= 0x40f)
            letter += 80;
        else if ((letter >= 0x139 && letter <= 0x148) || (letter >= 0x179 && letter <= 0x17e))
            letter += letter & 1;  // pairs that begin with an odd number
        else if (letter >= 0x100 && letter <= 0x17f)
            letter |= 1;
        folded += static_cast<char>(0xc0 | letter >> 6);
        folded += static_cast<char>(0x80 | (letter & 0x3f));
        ++i;
    }
    return folded;
}

std::string installed_part(const std::string& rel) {
    return rel.substr(rel.find('/') + 1);
}

// True where this folder or file is new to its system, so that its parents are worth a look.
bool enter(const std::string& rel, int system, bool is_file) {
    const std::string installed = installed_part(rel), key = without_case(installed);
    const auto [from, to] = build.installed.equal_range(key);
    bool known = false;
    for (auto it = from; it != to; ++it) {
        const installed_at& other = it->second;
        if (other.system != system && other.system != 0 && system != 0) continue;
        if (installed_part(other.rel) != installed)
            __MACIBM_alert(0, "Two paths of the reference copy differ in case alone!", other.rel, rel,
                           "Windows and macOS take them for one.", t_exit, OOPS_PLACE);
        if (is_file || other.is_file)
            __MACIBM_alert(0, "Two files of the reference copy would be installed at one path!", other.rel, rel,
                           "With every update an installer would fetch the other one.", t_exit, OOPS_PLACE);
        known |= other.system == system;
    }
    if (!known) build.installed.emplace(key, installed_at{rel, system, is_file});
    return !known;
}

}  // namespace

const char* fault_of_name(std::string_view name) {
    if (name.ends_with('.')) return "Windows drops the dot at its end, and then the name is another one.";
    const auto is_refused = [](char c) {
        return (c & ~31) == 0 || std::string_view("<>:\"/\\|?*").find(c) != std::string_view::npos;
    };
    if (std::any_of(name.begin(), name.end(), is_refused))
        return "Windows cannot have control characters nor any of < > : \" / \\ | ? * in a name.";
    std::string base = without_case(name.substr(0, name.find('.')));
    base.erase(base.find_last_not_of(' ') + 1);
    if (std::find(std::begin(devices), std::end(devices), base) != std::end(devices))
        return "Windows takes it for a device, whatever its ending.";
    return nullptr;
}

void check_reference_path() {
    const std::string text = text_that_decides(build.src_fold);
    if (!text.empty())
        __MACIBM_alert(0, "The path of the reference copy would hide its files!", build.src_fold,
                       "It holds '" + text + "', by which files are left out or taken for something else.",
                       "Move the copy to another folder.", t_exit, OOPS_PLACE);
}

void check_name(const std::string& name, const std::string& path) {
    if (name.back() == ' ')
        build_fatal(insult, "You tried to include a file or directory with a space at the end!",
                    "Windows cannot have that: it drops the space, and then the name is another one.", path, 389);
    if (path.find(':') != std::string::npos) build_fatal(insult, "found a  : in the path!", path, "", 391);
    if (path.find('\\') != std::string::npos) build_fatal(insult, "found a \\ in the path!", path, "", 392);
    // The catalogue is lines of fields: a line end would break the row, and leading blanks are skipped by its reader.
    if (path.find_first_of("\r\n") != std::string::npos)
        __MACIBM_alert(0, insult, "found a line end in the path!", path, "", t_exit, OOPS_PLACE);
    if (is_blank(static_cast<unsigned char>(name.front())))
        __MACIBM_alert(0, insult, "found a name that begins with a blank!", path, "", t_exit, OOPS_PLACE);
    if (const char* fault = fault_of_name(name))
        __MACIBM_alert(0, insult, "found a name that not every system can have!", fault, path, t_exit, OOPS_PLACE);
}

void check_link(const std::string& path) {
    std::string target;
    if (!is_sim_link(path, &target)) return;
    const fs::path inside = installed_part(path.substr(build.src_fold.size()));
    const fs::path meant = (inside.parent_path() / target).lexically_normal();
    // Also by what lies on the disk: the way may lead through another link.
    std::error_code error;
    const std::string real = (fs::weakly_canonical(fs::path(path).parent_path() / target, error) / "").string();
    const std::string root = (fs::weakly_canonical(build.src_fold, error) / "").string();
    if (target.starts_with('/') || *meant.begin() == ".." || (!error && !real.starts_with(root)))
        __MACIBM_alert(0, "A link leads out of the reference copy!", path, target,
                       "On a user's disk it would lead nowhere, or to something else.", t_exit, OOPS_PLACE);
}

void enter_installed_path(const std::string& path, int platform) {
    const int system = platform == 6 ? 3 : platform;  // both are Linux
    std::string rel = path.substr(build.src_fold.size());
    const std::size_t top = rel.find('/');
    bool is_new = enter(rel, system, true);
    while (is_new && rel.rfind('/') != top) {
        rel.resize(rel.rfind('/'));
        is_new = enter(rel, system, false);
    }
}
