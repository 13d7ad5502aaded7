#include "platform/elf_file.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/memory_map.h"

constexpr unsigned char own_class = sizeof(void*) == 8 ? ELFCLASS64 : ELFCLASS32;

const char* elf_text(std::string_view table, std::uint64_t offset) {
    if (offset >= table.size() || table.find('\0', offset) == std::string_view::npos) return nullptr;
    return table.data() + offset;
}

template <class table>
const table* elf_file::table_at(std::uint64_t offset, std::uint64_t entries) const {
    if (offset % alignof(table) != 0 || offset > size || entries > (size - offset) / sizeof(table)) return nullptr;
    return reinterpret_cast<const table*>(data + offset);
}

elf_file::elf_file(const char* path, std::uint64_t inode) {
    // Non-blocking: the name may by now belong to something else, such as a FIFO.
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return;
    struct stat info {};
    const bool is_it = fstat(fd, &info) == 0 && S_ISREG(info.st_mode) && (!inode || info.st_ino == inode);
    if (is_it && info.st_size > 0) {
        void* const mapped = mmap(nullptr, static_cast<std::size_t>(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0);
        if (mapped != MAP_FAILED) {
            data = static_cast<const char*>(mapped);
            size = static_cast<std::size_t>(info.st_size);
        }
    }
    close(fd);
    const auto* const header = table_at<ElfW(Ehdr)>(0, 1);
    if (!header || std::memcmp(header->e_ident, ELFMAG, SELFMAG) != 0 || header->e_ident[EI_CLASS] != own_class) return;
    if (header->e_shentsize != sizeof(section_header)) return;
    sections = table_at<section_header>(header->e_shoff, header->e_shnum);
    if (sections) count = header->e_shnum;
}

elf_file::~elf_file() {
    if (data) munmap(const_cast<char*>(data), size);
}

std::string_view elf_file::bytes(const section_header& section) const {
    if (section.sh_type == SHT_NOBITS || (section.sh_flags & SHF_COMPRESSED)) return {};
    const char* const start = table_at<char>(section.sh_offset, section.sh_size);
    return start ? std::string_view(start, section.sh_size) : std::string_view();
}

std::string_view elf_file::bytes(std::string_view section_name) const {
    const unsigned names_at = count ? table_at<ElfW(Ehdr)>(0, 1)->e_shstrndx : 0;
    if (names_at >= count) return {};
    const std::string_view names = bytes(sections[names_at]);
    for (std::size_t i = 0; i < count; ++i) {
        const char* const name = elf_text(names, sections[i].sh_name);
        if (name && section_name == name) return bytes(sections[i]);
    }
    return {};
}

std::uint64_t elf_file::lowest_address() const {
    if (!count) return 0;
    const auto* const header = table_at<ElfW(Ehdr)>(0, 1);
    const auto* const segments = table_at<ElfW(Phdr)>(header->e_phoff, header->e_phnum);
    std::uint64_t lowest = UINT64_MAX;
    for (unsigned i = 0; segments && i < header->e_phnum; ++i)
        if (segments[i].p_type == PT_LOAD) lowest = std::min<std::uint64_t>(lowest, segments[i].p_vaddr);
    return lowest == UINT64_MAX ? 0 : lowest / page_size() * page_size();
}
