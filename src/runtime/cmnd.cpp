#include "runtime/cmnd.h"

#include <algorithm>

cmnd_class cmnd;

cmnd_class::cmnd_class() {
    commands.push_back({"cmnd_nothing", "sim/operation/none", "Do nothing at all!"});
}

int cmnd_class::get_cmnd_by_name(const std::string& name) const {
    const auto found =
        std::find_if(commands.begin(), commands.end(), [&](const command& one) { return one.name == name; });
    return found == commands.end() ? -1 : static_cast<int>(found - commands.begin());
}

void cmnd_class::get_cmds_in_path(const std::string& path, std::vector<std::string>& names) const {
    names.clear();
    const std::string folder = path.empty() || path.back() == '/' ? path : path + "/";
    for (const command& one : commands) {
        if (!one.path.starts_with(folder)) continue;
        const std::size_t slash = one.path.find('/', folder.size());
        const std::size_t end = slash == std::string::npos ? one.path.size() : slash + 1;
        const std::string name = one.path.substr(folder.size(), end - folder.size());
        if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
    }
}

int cmnd_class::add_cmd(const std::string& name, const std::string& description) {
    commands.push_back({name, "DYNAMIC", description});
    return static_cast<int>(commands.size()) - 1;
}

cmnd_class::command* cmnd_class::at(int index) {
    return index >= 0 && index < static_cast<int>(commands.size()) ? &commands[static_cast<std::size_t>(index)]
                                                                   : nullptr;
}

void cmnd_class::press_one(int index) {
    if (command* one = at(index)) {
        ++one->pressed;
        one->held_frames = 1;
    }
}

void cmnd_class::press_always(int index) {
    if (command* one = at(index)) ++one->held_frames;
}

void cmnd_class::release_one(int index) {
    if (command* one = at(index)) one->held_frames = 0;
}

void cmnd_class::single_press(int index) {
    press_one(index);
    release_one(index);
}
