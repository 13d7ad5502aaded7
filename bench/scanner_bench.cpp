// The text scanner on a catalogue of 100,000 rows, read as the installer reads it, beside the standard streams.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>

#include "files/xmap.h"

namespace {

constexpr int rows = 100000;

class catalogue {
  public:
    catalogue() : path("/tmp/velaris-bench-" + std::to_string(getpid())) {
        std::ofstream out(path);
        out << "I\n900 version\nINSTALLER\n\n";
        for (int i = 0; i < rows; ++i) {
            if (i % 20 == 0) out << "\nDIR All/Resources/default scenery/folder " << i / 20 << "/\n";
            out << "FILE 0 0 90019 " << i << " " << 2 * i << " d41d8cd98f00b204e9800998ecf8427e file name " << i
                << ".txt\n";
        }
    }
    ~catalogue() { std::remove(path.c_str()); }
    const std::string path;
};

void scanner(benchmark::State& state) {
    const catalogue file;
    const int versions[] = {840, 900, 0};
    while (state.KeepRunning()) {
        xmap_class in(file.path);
        int found = in.check_file(file_text, versions, "INSTALLER", nullptr) ? 0 : -1;
        std::string folder, signature, name;
        while (!in.at_end()) {
            if (in.TXT_token_match_blank("DIR")) {
                in.TXT_str_scan_eoln(&folder);
            } else if (in.TXT_token_match_blank("FILE")) {
                for (int field = 0; field < 5; ++field)
                    benchmark::DoNotOptimize(in.TXT_int_scan());
                in.TXT_str_scan_space(&signature);
                in.TXT_str_scan_eoln(&name);
                ++found;
            } else {
                in.TXT_eoln_skip();
            }
        }
        if (found != rows) state.SkipWithError("rows were lost");
    }
    state.SetItemsProcessed(state.iterations() * rows);
}

void standard_streams(benchmark::State& state) {
    const catalogue file;
    while (state.KeepRunning()) {
        std::ifstream in(file.path);
        std::string line, word, folder, signature, name;
        int found = 0;
        while (std::getline(in, line)) {
            std::istringstream fields(line);
            if (!(fields >> word)) continue;
            if (word == "DIR") {
                std::getline(fields >> std::ws, folder);
            } else if (word == "FILE") {
                int value;
                for (int field = 0; field < 5; ++field)
                    fields >> value;
                fields >> signature;
                std::getline(fields >> std::ws, name);
                ++found;
            }
        }
        if (found != rows) state.SkipWithError("rows were lost");
    }
    state.SetItemsProcessed(state.iterations() * rows);
}

}  // namespace

BENCHMARK(scanner)->Unit(benchmark::kMillisecond);
BENCHMARK(standard_streams)->Unit(benchmark::kMillisecond);
