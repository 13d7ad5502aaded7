#include "platform/debug_lines.h"

#include <cstring>
#include <string_view>

namespace {

enum : unsigned {
    // standard opcodes
    op_extended = 0,
    op_copy = 1,
    op_advance_pc = 2,
    op_advance_line = 3,
    op_set_file = 4,
    op_const_add_pc = 8,
    op_fixed_advance_pc = 9,
    // extended opcodes
    ext_end_sequence = 1,
    ext_set_address = 2,
    // content of an entry in a table of files
    content_path = 1,
    // forms of such content
    form_data2 = 0x05,
    form_data4 = 0x06,
    form_data8 = 0x07,
    form_string = 0x08,
    form_block = 0x09,
    form_data1 = 0x0b,
    form_strp = 0x0e,
    form_udata = 0x0f,
    form_data16 = 0x1e,
    form_line_strp = 0x1f
};

// Reads forward and never past the end: from there on it gives zeros and is not `ok`.
struct cursor {
    const char* at;
    const char* end;
    bool ok = true;

    explicit cursor(std::string_view bytes) : at(bytes.data()), end(bytes.data() + bytes.size()) {}
    bool more() const { return ok && at < end; }
    void skip(std::uint64_t bytes) {
        ok = ok && bytes <= static_cast<std::uint64_t>(end - at);
        if (ok) at += bytes;
    }
    template <class number>
    number take() {
        number value = 0;
        const char* const from = at;
        skip(sizeof value);
        if (ok) std::memcpy(&value, from, sizeof value);
        return value;
    }
    std::uint64_t take_unsigned(unsigned bytes) {
        if (bytes == 8) return take<std::uint64_t>();
        if (bytes == 4) return take<std::uint32_t>();
        ok = false;
        return 0;
    }
    // Seven bits in a byte, low ones first; the last byte of a signed number carries the sign in bit 6.
    std::uint64_t leb(bool is_signed = false) {
        std::uint64_t value = 0;
        for (unsigned shift = 0; more(); shift += 7) {
            const auto byte = static_cast<unsigned char>(*at++);
            if (shift < 64) value |= static_cast<std::uint64_t>(byte & 0x7f) << shift;
            if (byte & 0x80) continue;
            if (is_signed && (byte & 0x40) && shift + 7 < 64) value |= ~std::uint64_t{0} << (shift + 7);
            return value;
        }
        ok = false;
        return 0;
    }
    const char* text() {
        const char* const start = at;
        const void* const nul = ok ? std::memchr(at, '\0', static_cast<std::size_t>(end - at)) : nullptr;
        ok = nul != nullptr;
        if (ok) at = static_cast<const char*>(nul) + 1;
        return ok ? start : "";
    }
    // The next `bytes` as a cursor of their own.
    cursor part(std::uint64_t bytes) {
        const char* const start = at;
        skip(bytes);
        return cursor(ok ? std::string_view(start, bytes) : std::string_view());
    }
};

struct text_sections {
    std::string_view line_str, str;
};

struct line_header {
    unsigned version = 0, offset_size = 4, instruction_size = 1;
    int line_base = 0;
    unsigned line_range = 0, opcode_base = 0;
    const char* operand_counts = nullptr;  // of the standard opcodes, from the first on
    cursor tables{{}};                     // of folders and files
    cursor program{{}};
};

struct row_t {
    std::uint64_t address = 0, file = 1, line = 1;
};

bool read_header(cursor& unit, unsigned offset_size, line_header& header) {
    header.version = unit.take<std::uint16_t>();
    header.offset_size = offset_size;
    if (header.version < 2 || header.version > 5) return false;
    if (header.version >= 5) unit.skip(2);  // sizes of an address and of a segment
    cursor head = unit.part(unit.take_unsigned(offset_size));
    header.program = unit;
    header.instruction_size = head.take<std::uint8_t>();
    head.skip(header.version >= 4 ? 2 : 1);       // operations of an instruction; whether rows begin statements
    header.line_base = head.take<std::int8_t>();  // NOLINT(bugprone-signed-char-misuse): a number with a sign
    header.line_range = head.take<std::uint8_t>();
    header.opcode_base = head.take<std::uint8_t>();
    header.operand_counts = head.at;
    head.skip(header.opcode_base ? header.opcode_base - 1 : 0);
    header.tables = head;
    return head.ok && unit.ok && header.line_range && header.opcode_base;
}

// Runs one table and keeps the row that holds `wanted`, which is the last one not above it, if that lies nearer than
// what `best` holds already.
class line_machine {
  public:
    line_machine(const line_header& h, std::uint64_t address, row_t& b)
        : header(h), program(h.program), wanted(address), best(b) {}

    // True when `best` was exchanged.
    bool run() {
        while (program.more())
            step(program.take<std::uint8_t>());
        return found;
    }

  private:
    void advance(std::uint64_t instructions) { row.address += instructions * header.instruction_size; }

    void emit() {
        // A sequence from 0 belongs to a function that the linker threw away.
        const bool holds =
            in_sequence && sequence_start && previous.address <= wanted && wanted < row.address && previous.line;
        if (holds && previous.address > best.address) {
            best = previous;
            found = true;
        }
        if (!in_sequence) sequence_start = row.address;
        in_sequence = true;
        previous = row;
    }

    void end_sequence() {
        emit();
        in_sequence = false;
        row = row_t{};
    }

    void extended() {
        cursor operation = program.part(program.leb());
        const unsigned code = operation.take<std::uint8_t>();
        if (code == ext_end_sequence) end_sequence();
        if (code == ext_set_address)
            row.address = operation.take_unsigned(static_cast<unsigned>(operation.end - operation.at));
    }

    void step(unsigned opcode) {
        if (opcode >= header.opcode_base) {
            const unsigned both = opcode - header.opcode_base;
            advance(both / header.line_range);
            row.line += static_cast<std::uint64_t>(header.line_base + static_cast<int>(both % header.line_range));
            emit();
            return;
        }
        switch (opcode) {
            case op_extended:
                return extended();
            case op_copy:
                return emit();
            case op_advance_pc:
                return advance(program.leb());
            case op_advance_line:
                row.line += program.leb(true);
                return;
            case op_set_file:
                row.file = program.leb();
                return;
            case op_const_add_pc:
                return advance((255 - header.opcode_base) / header.line_range);
            case op_fixed_advance_pc:
                row.address += program.take<std::uint16_t>();
                return;
            default:
                for (int i = 0; i < header.operand_counts[opcode - 1]; ++i)
                    program.leb();
        }
    }

    const line_header& header;
    cursor program;
    const std::uint64_t wanted;
    row_t& best;
    row_t row, previous;
    bool in_sequence = false, found = false;
    std::uint64_t sequence_start = 0;
};

// Reads one value; the text if it is one, else null.
const char* read_form(cursor& tables, std::uint64_t form, unsigned offset_size, const text_sections& texts) {
    switch (form) {
        case form_string:
            return tables.text();
        case form_line_strp:
            return elf_text(texts.line_str, tables.take_unsigned(offset_size));
        case form_strp:
            return elf_text(texts.str, tables.take_unsigned(offset_size));
        case form_udata:
            tables.leb();
            break;
        case form_data1:
        case form_data2:
            tables.skip(form == form_data1 ? 1 : 2);
            break;
        case form_data4:
        case form_data8:
            tables.skip(form == form_data4 ? 4 : 8);
            break;
        case form_data16:
            tables.skip(16);
            break;
        case form_block:
            tables.skip(tables.leb());
            break;
        default:
            tables.ok = false;
    }
    return nullptr;
}

// Version 5 tells the form of a table's entries before them. Reads the table up to entry `wanted`, and gives its path.
const char* path_in_table(cursor& tables, unsigned offset_size, const text_sections& texts, std::uint64_t wanted) {
    const unsigned formats = tables.take<std::uint8_t>();
    cursor format = tables;
    for (unsigned i = 0; i < 2 * formats; ++i)
        tables.leb();
    const std::uint64_t count = tables.leb();
    const char* path = nullptr;
    for (std::uint64_t entry = 0; entry < count && tables.ok && formats; ++entry) {
        cursor kinds = format;
        for (unsigned i = 0; i < formats; ++i) {
            const std::uint64_t content = kinds.leb(), form = kinds.leb();
            const char* const text = read_form(tables, form, offset_size, texts);
            if (content == content_path && entry == wanted) path = text;
        }
        if (entry == wanted) return path;
    }
    return nullptr;
}

const char* path_of_file(const line_header& header, const text_sections& texts, std::uint64_t file) {
    cursor tables = header.tables;
    if (header.version >= 5) {
        path_in_table(tables, header.offset_size, texts, UINT64_MAX);  // past the folders
        return path_in_table(tables, header.offset_size, texts, file);
    }
    while (*tables.text()) {
    }
    for (std::uint64_t i = 1; tables.ok; ++i) {
        const char* const path = tables.text();
        if (!*path) break;
        if (i == file) return path;
        tables.leb(), tables.leb(), tables.leb();  // folder, time, length
    }
    return nullptr;
}

}  // namespace

bool find_source_place(const elf_file& elf, std::uint64_t address, source_place& place) {
    const text_sections texts{elf.bytes(".debug_line_str"), elf.bytes(".debug_str")};
    row_t best;
    bool found = false;
    for (cursor all(elf.bytes(".debug_line")); all.more();) {
        unsigned offset_size = 4;
        std::uint64_t size = all.take<std::uint32_t>();
        if (size == UINT32_MAX) {
            offset_size = 8;
            size = all.take<std::uint64_t>();
        }
        cursor unit = all.part(size);
        line_header header;
        if (!read_header(unit, offset_size, header) || !line_machine(header, address, best).run()) continue;
        const char* const file = path_of_file(header, texts, best.file);
        found = file != nullptr;
        place = {file, static_cast<int>(best.line)};
    }
    return found;
}
