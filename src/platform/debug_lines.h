// debug_lines.h: source file and line of an address, from the line tables (".debug_line", DWARF 2 to 5) of an ELF file.
// A line table is a small program: run from its start, it gives one row after another of address, file and line. All of
// them are run for each question, as there is no index that every compiler writes; a whole program takes milliseconds.
// Errors: what cannot be understood ends its own table. Nothing allocates or throws: a signal handler may ask.
#pragma once

#include <cstdint>

#include "platform/elf_file.h"

struct source_place {
    const char* file;  // as the compiler was given it; within the mapping of `elf`
    int line;
};

// `address` as the file is linked, not as it is loaded. False when there is no row for it.
bool find_source_place(const elf_file& elf, std::uint64_t address, source_place& place);
