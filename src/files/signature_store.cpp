#include "files/signature_store.h"

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "files/md5.h"
#include "platform/folders.h"

namespace {

constexpr std::string_view first_line = "VELARIS SIGNATURES 1\n";
constexpr std::size_t signature_length = 32;

bool read_whole(const std::string& path, std::string& text) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rbe"), std::fclose);
    if (!file) return false;
    std::fseek(file.get(), 0, SEEK_END);
    const long size = std::ftell(file.get());
    if (size <= 0) return false;
    std::rewind(file.get());
    text.resize(static_cast<std::size_t>(size));
    return std::fread(text.data(), 1, text.size(), file.get()) == text.size();
}

// The number at the start of `line`, which is taken off with the blank behind it.
template <class number>
bool take_number(std::string_view& line, number& value) {
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), value);
    const std::size_t length = static_cast<std::size_t>(end - line.data());
    if (error != std::errc() || length == line.size() || line[length] != ' ') return false;
    line.remove_prefix(length + 1);
    return true;
}

template <class number>
void append_number(std::string& text, number value) {
    char digits[24];
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr) += ' ';
}

}  // namespace

signature_store::signature_store(const std::string& file) {
    if (!file.empty() && read_whole(file, text) && read_rows()) return;
    rows.clear();
    text.clear();
}

bool signature_store::read_rows() {
    const std::string_view all = text;
    if (all.size() < first_line.size() + signature_length + 1 || !all.starts_with(first_line) || all.back() != '\n')
        return false;
    const std::string_view body = all.substr(0, all.size() - signature_length - 1);
    if (all.substr(body.size(), signature_length) != md5_of(body)) return false;
    rows.reserve(body.size() / 150);
    for (std::size_t from = first_line.size(); from < body.size();) {
        const std::size_t end = body.find('\n', from);
        if (end == std::string_view::npos) return false;
        std::string_view line = body.substr(from, end - from);
        from = end + 1;
        stored_signature row;
        if (line.size() < signature_length + 1) return false;
        row.signature = line.substr(0, signature_length);
        line.remove_prefix(signature_length + 1);
        file_identity& id = row.identity;
        if (!take_number(line, id.size) || !take_number(line, id.mtime) || !take_number(line, id.ctime) ||
            !take_number(line, id.device) || !take_number(line, id.inode))
            return false;
        row.path = line;
        rows.emplace(row.path, row);
    }
    return true;
}

std::string_view signature_store::find(std::string_view path, const file_identity& identity) const {
    const auto row = rows.find(path);
    return row == rows.end() || row->second.identity != identity ? std::string_view() : row->second.signature;
}

int write_signature_store(const std::string& file, const std::vector<stored_signature>& rows, std::int64_t signed_at) {
    constexpr std::int64_t settled = 2'000'000'000;
    std::string text(first_line);
    for (const stored_signature& row : rows) {
        const file_identity& id = row.identity;
        if (id.mtime > signed_at - settled || id.ctime > signed_at - settled) continue;
        text.append(row.signature) += ' ';
        append_number(text, id.size);
        append_number(text, id.mtime);
        append_number(text, id.ctime);
        append_number(text, id.device);
        append_number(text, id.inode);
        text.append(row.path) += '\n';
    }
    text += md5_of(text) + "\n";

    const std::string beside = file + ".new";
    std::FILE* out = std::fopen(beside.c_str(), "wbe");
    if (!out) return errno;
    errno = 0;
    const bool written = std::fwrite(text.data(), 1, text.size(), out) == text.size();
    const bool closed = std::fclose(out) == 0;
    if (written && closed && std::rename(beside.c_str(), file.c_str()) == 0) return 0;
    const int err = errno != 0 ? errno : EIO;
    std::remove(beside.c_str());
    return err;
}

std::string signature_store_of(const std::string& destination) {
    const std::string folder = state_folder();
    if (folder.empty()) return "";
    const std::unique_ptr<char, void (*)(void*)> real(realpath(destination.c_str(), nullptr), std::free);
    return folder + "signatures-" + md5_of(real ? real.get() : destination) + ".txt";
}
