// elf_file.h: the sections of an ELF file of this machine's own class, mapped read-only.
// Errors: a file that is none, or whose tables lead out of it, has no sections. Nothing allocates or throws, so that a
// signal handler may look.
#pragma once

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

class elf_file {
  public:
    // `inode` not 0: a file at that path with another inode counts as none, since it is not the one that is running.
    elf_file(const char* path, std::uint64_t inode);
    ~elf_file();
    elf_file(const elf_file&) = delete;
    elf_file& operator=(const elf_file&) = delete;

    using section_header = ElfW(Shdr);
    std::size_t section_count() const { return count; }
    const section_header& section(std::size_t index) const { return sections[index]; }
    std::string_view bytes(const section_header& section) const;  // empty: none, compressed, or outside of the file
    std::string_view bytes(std::string_view section_name) const;
    std::uint64_t lowest_address() const;  // that the file is linked for, down to a whole page

  private:
    template <class table>
    const table* table_at(std::uint64_t offset, std::uint64_t entries) const;
    const char* data = nullptr;
    std::size_t size = 0;
    const section_header* sections = nullptr;
    std::size_t count = 0;
};

// The text at `offset` of a string table; null when it does not end within the table.
const char* elf_text(std::string_view table, std::uint64_t offset);
