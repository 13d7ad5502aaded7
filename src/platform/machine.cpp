#include "platform/machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

static bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

std::string first_three_numbers(const std::string& release) {
    std::string result;
    std::size_t at = 0;
    for (int part = 0; part < 3; ++part) {
        const auto from = release.begin() + static_cast<std::ptrdiff_t>(at);
        const std::string number(from, std::find_if_not(from, release.end(), is_digit));
        at += number.size();
        // Only a point leads to a further number: in "6.1-rc3" the third is missing.
        if (at < release.size() && release[at] == '.')
            ++at;
        else
            at = release.size();
        result += (part ? "." : "") + (number.empty() ? "?" : number);
    }
    return result;
}

// The value of the first line "key   : value" of the processor list; empty if there is none.
static std::string cpuinfo(const std::string& key) {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        const std::size_t colon = line.find(": ");
        if (line.starts_with(key) && colon != std::string::npos) return line.substr(colon + 2);
    }
    return {};
}

static std::string cpu_mhz() {
    const std::string listed = cpuinfo("cpu MHz");
    if (!listed.empty()) return std::to_string(std::strtol(listed.c_str(), nullptr, 10));
    long khz = 0;
    std::ifstream("/sys/devices/system/cpu/cpu0/cpufreq/cpuinfo_max_freq") >> khz;
    return khz > 0 ? std::to_string(khz / 1000) : "?";
}

static std::string ram_mb() {
    const long pages = sysconf(_SC_PHYS_PAGES), page_size = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || page_size <= 0) return "?";
    return std::to_string(static_cast<long long>(pages) * page_size / (1 << 20));
}

machine_facts get_machine_facts() {
    utsname names;
    const bool known = uname(&names) == 0;
    const std::string model = cpuinfo("model name");
    return {.os_release = first_three_numbers(known ? names.release : ""),
            .cpu_code = known ? names.machine : "?",
            .cpu_name = model.empty() ? "?" : model,
            .cpu_mhz = cpu_mhz(),
            .bus_mhz = "?",
            .ram_mb = ram_mb()};
}

int count_processors() {
    return static_cast<int>(std::max(1L, sysconf(_SC_NPROCESSORS_ONLN)));
}
