#include "platform/symbols.h"

#include <dlfcn.h>
#include <sys/auxv.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "platform/debug_lines.h"
#include "platform/elf_file.h"
#include "platform/memory_map.h"

template <std::size_t size>
static void copy_text(char (&to)[size], std::string_view text) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::memcpy(to, text.data(), length);
    to[length] = '\0';
}

template <std::size_t size>
static void append_text(char (&to)[size], std::string_view text) {
    const std::size_t used = std::strlen(to), length = std::min(text.size(), size - 1 - used);
    std::memcpy(to + used, text.data(), length);
    to[used + length] = '\0';
}

// A name with its length before it, as in "12console_main"; empty if the text does not begin with one.
static std::string_view take_counted_name(std::string_view& text) {
    std::size_t length = 0, digits = 0;
    for (; digits < text.size() && digits < 5 && text[digits] >= '0' && text[digits] <= '9'; ++digits)
        length = length * 10 + static_cast<std::size_t>(text[digits] - '0');
    if (length == 0 || length > text.size() - digits) return {};
    const std::string_view name = text.substr(digits, length);
    text.remove_prefix(digits + length);
    return name;
}

// "_ZN12_GLOBAL__N_14passEv" gives "pass" and "_ZN3xyz3abcEi" "xyz::abc". The C++ library's own reader allocates; this
// one knows plain and nested names, and leaves templates and operators as they are.
template <std::size_t size>
static void copy_readable(char (&to)[size], std::string_view mangled) {
    std::string_view rest = mangled;
    to[0] = '\0';
    bool plain = rest.starts_with("_Z");
    if (plain) rest.remove_prefix(2);
    const bool nested = plain && rest.starts_with('N');
    if (nested) rest.remove_prefix(1);
    if (nested && rest.starts_with('K')) rest.remove_prefix(1);   // of a const object
    if (!nested && rest.starts_with('L')) rest.remove_prefix(1);  // static
    while (plain) {
        const std::string_view name = take_counted_name(rest);
        plain = !name.empty();
        if (plain && !name.starts_with("_GLOBAL__N_")) {
            if (*to) append_text(to, "::");
            append_text(to, name);
        }
        if (!nested || rest.starts_with('E')) break;
    }
    if (!plain || !*to || (!nested && rest.starts_with('I'))) copy_text(to, mangled);
}

static bool is_code_or_data(const ElfW(Sym) & symbol) {
    const auto type = symbol.st_info & 0xf;
    return symbol.st_shndx != SHN_UNDEF && symbol.st_name && type != STT_SECTION && type != STT_FILE && type != STT_TLS;
}

// The symbol with the largest address not above the wanted one; the first of several.
static void find_in_table(const elf_file& elf, std::uint64_t bias, std::uintptr_t address, symbol_info* info) {
    auto nearest = reinterpret_cast<std::uintptr_t>(info->symbol_address);
    bool taken = false;
    for (std::size_t i = 0; i < elf.section_count(); ++i) {
        const elf_file::section_header& section = elf.section(i);
        if (section.sh_type != SHT_SYMTAB || section.sh_link >= elf.section_count()) continue;
        const std::string_view symbols = elf.bytes(section), names = elf.bytes(elf.section(section.sh_link));
        for (std::size_t at = 0; at + sizeof(ElfW(Sym)) <= symbols.size(); at += sizeof(ElfW(Sym))) {
            ElfW(Sym) symbol;
            std::memcpy(&symbol, symbols.data() + at, sizeof symbol);
            const std::uintptr_t start = symbol.st_value + bias;
            if (!is_code_or_data(symbol) || start > address || start < nearest || (taken && start == nearest)) continue;
            const char* const name = elf_text(names, symbol.st_name);
            if (!name || *name == '$') continue;  // a mark for disassemblers
            copy_readable(info->symbol, name);
            nearest = start;
            taken = true;
        }
    }
    info->symbol_address = reinterpret_cast<const void*>(nearest);
}

// The program's own file is reached by the kernel's link, also where it was moved or replaced since.
static bool is_own_program(const void* image_base) {
    Dl_info program{};
    const auto* const headers = reinterpret_cast<const void*>(getauxval(AT_PHDR));
    return headers && dladdr(headers, &program) && program.dli_fbase == image_base;
}

static void find_in_file(const char* path, std::uint64_t inode, std::uintptr_t address, symbol_info* info) {
    const elf_file elf(path, inode);
    const std::uint64_t bias = reinterpret_cast<std::uintptr_t>(info->image_base) - elf.lowest_address();
    find_in_table(elf, bias, address, info);
    source_place place{};
    if (!find_source_place(elf, address - bias, place)) return;
    copy_text(info->source, place.file);
    info->line = place.line;
}

void find_symbol(const void* address, symbol_info* info) {
    *info = symbol_info{};
    info->line = -1;
    Dl_info loaded{};
    if (!dladdr(address, &loaded)) return;
    copy_text(info->image, loaded.dli_fname ? loaded.dli_fname : "");
    info->image_base = loaded.dli_fbase;
    if (loaded.dli_sname) copy_readable(info->symbol, loaded.dli_sname);
    info->symbol_address = loaded.dli_saddr;

    const auto at = reinterpret_cast<std::uintptr_t>(address);
    memory_region region;
    if (is_own_program(loaded.dli_fbase))
        find_in_file("/proc/self/exe", 0, at, info);
    else if (region_at_or_above(at, region) && region.start <= at && region.inode)
        find_in_file(region.name, region.inode, at, info);
}
