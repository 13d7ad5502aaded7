#include "support/scratch.h"

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

void let_no_file_grow_past(std::size_t bytes) {
    const rlimit most = {bytes, bytes};
    if (setrlimit(RLIMIT_FSIZE, &most) != 0) throw std::runtime_error("the size of a file cannot be limited");
    std::signal(SIGXFSZ, SIG_IGN);
}

namespace fs = std::filesystem;

scratch::scratch() {
    std::string name = (fs::temp_directory_path() / "velaris-test-XXXXXX").string();
    if (!mkdtemp(name.data())) throw std::runtime_error("no scratch folder: " + name);
    folder = name + "/";
}

scratch::~scratch() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

std::string scratch::write(const std::string& name, const std::string& bytes) const {
    std::string full = folder + name;
    fs::create_directories(fs::path(full).parent_path());
    std::ofstream out(full, std::ios::binary | std::ios::trunc);
    out << bytes;
    if (!out.flush()) throw std::runtime_error("cannot write " + full);
    return full;
}

std::string scratch::read(const std::string& full) {
    std::ifstream in(full, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool scratch::exists(const std::string& full) {
    std::error_code ignored;
    return fs::exists(fs::symlink_status(full, ignored));
}
