// machine.h: facts about the machine for the head of the log, by which support knows what a report is about. A fact
// that the system does not tell is "?": a missing one is no reason to fail.
// Threads: any.
#pragma once

#include <string>

struct machine_facts {
    std::string os_release;  // first three numbers of the kernel release, joined by "."; "?" for each missing one
    std::string cpu_code;    // the kernel's name of the architecture
    std::string cpu_name;    // model name as the system gives it
    std::string cpu_mhz;     // whole number
    std::string bus_mhz;     // "?" on Linux, which does not tell
    std::string ram_mb;      // whole number of 2^20 bytes
};

machine_facts get_machine_facts();

// "6.1.0-13-amd64" gives "6.1.0"; "?" stands for each number that is missing.
std::string first_three_numbers(const std::string& release);

// Processors that are online; at least 1.
int count_processors();
