#include "engine/trust.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <iterator>
#include <sstream>

#include "platform/folders.h"
#include "runtime/log.h"
#include "runtime/product.h"

trust_t trust;

static bool read_whole(const std::string& path, std::string& bytes) {
    std::ifstream file(path, std::ios::binary);
    if (!file) return false;
    bytes.assign(std::istreambuf_iterator<char>(file), {});
    return !file.bad();
}

void trust_built_in_keys() {
    std::istringstream texts(built_in_public_keys);
    for (std::string text; texts >> text;) {
        minisign_key key;
        if (read_minisign_key(text, key)) trust.keys.push_back(key);
    }
}

bool trust_key(const std::string& given, std::string& problem) {
    minisign_key key;
    std::string text;
    if (!read_minisign_key(given, key) && !(read_whole(given, text) && read_minisign_key(text, key))) {
        problem = "--public_key wants a minisign public key, its text or its file, and not '" + given + "'";
        return false;
    }
    trust.keys = {key};
    return true;
}

// Numbers of the newest releases seen, a line for each key: its name and the number.
static std::string seen_path() {
    const std::string folder = state_folder();
    return folder.empty() ? "" : folder + "newest releases seen.txt";
}

// The newest that any of the keys signed: a new key of the maker's must not open the way to what the old one signed.
static std::int64_t newest_seen() {
    std::ifstream file(seen_path());
    std::int64_t newest = 0, number = 0;
    for (std::string name; file >> name >> number;)
        if (std::any_of(trust.keys.begin(), trust.keys.end(),
                        [&](const minisign_key& key) { return minisign_key_name(key) == name; }))
            newest = std::max(newest, number);
    return newest;
}

static std::string date_of(std::int64_t seconds) {
    const std::time_t time = static_cast<std::time_t>(seconds);
    std::tm parts{};
    char text[32];
    if (!gmtime_r(&time, &parts) || std::strftime(text, sizeof text, "%Y-%m-%d", &parts) == 0) return "?";
    return text;
}

static bool whole_number(const std::string& text, std::int64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= 0;
}

static std::string names_of_keys() {
    std::string names;
    for (const minisign_key& key : trust.keys)
        names += (names.empty() ? "" : " or ") + minisign_key_name(key);
    return names;
}

std::string why_not_trusted(const std::string& catalogue_path, const std::string& signature_path,
                            const std::string& release_on_offer, std::int64_t now) {
    trust.release.clear();
    std::string catalogue, signature, comment;
    if (!read_whole(catalogue_path, catalogue)) return "its catalogue cannot be read from " + catalogue_path;
    if (!read_whole(signature_path, signature)) signature.clear();
    switch (check_minisign(signature, catalogue, trust.keys, comment)) {
        case minisign_result::no_signature:
            return "what it gives for a signature is none";
        case minisign_result::other_key:
            return "its catalogue is not signed by " + names_of_keys();
        case minisign_result::false_signature:
            return "its catalogue is not the one that was signed";
        case minisign_result::good:
            break;
    }
    const std::string release = trusted_value(comment, "name");
    if (release != release_on_offer)
        return "its catalogue is of \"" + release + "\", not of what the server list names";
    std::int64_t number = 0, expires = 0;
    if (!whole_number(trusted_value(comment, "number"), number))
        return "its signature does not tell the release's number";
    const std::string date = trusted_value(comment, "expires");
    if (!date.empty() && !whole_number(date, expires)) return "its signature has no date that can be read";
    if (!trust.allow_older) {
        if (number < newest_seen())
            return "its catalogue is older (" + std::to_string(number) + ") than one that was here before (" +
                   std::to_string(newest_seen()) + ")";
        if (!date.empty() && now > expires) return "its catalogue was good until " + date_of(expires);
    }
    trust.release = release;
    trust.number = number;
    return "";
}

void note_trusted_release() {
    const std::string path = seen_path();
    if (trust.release.empty() || path.empty() || trust.number <= newest_seen()) return;
    const std::string mine = minisign_key_name(trust.keys.front());
    std::string others, line;
    std::ifstream before(path);
    while (std::getline(before, line))
        if (!line.starts_with(mine + " ")) others += line + "\n";
    // Beside and renamed: a run that is killed must not make everything forgotten.
    const std::string beside = path + ".new";
    std::ofstream after(beside, std::ios::trunc);
    after << others << mine << ' ' << trust.number << '\n';
    after.close();
    if (!after || std::rename(beside.c_str(), path.c_str()) != 0)
        xer << "The number of the newest release could not be kept in " << path << std::endl;
}
