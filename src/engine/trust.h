// trust.h: whether a catalogue may be believed. Mirrors, the list of them and the network are other people's; where the
// program knows the maker's keys it takes only a catalogue that one of them signed ("directory.txt.zip.minisig" beside
// it), for the release that the server list names, not older than the newest that it took before on this account, and
// not past its date. So whoever stands on the way can keep a release from a user, but cannot give him one. A file
// needs no signature of its own: the signed catalogue holds its MD5, and a second file with a given MD5 is beyond
// reach. A maker's own collisions are not defended against.
// Threads: main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "files/minisign.h"

constexpr std::int64_t most_signature_bytes = 4096;  // a signature is four short lines

struct trust_t {
    std::vector<minisign_key> keys;  // none: every catalogue is taken as it comes
    bool allow_older = false;        // take one that is older than one seen before, or past its date
    std::string release;             // what the last catalogue that was believed says: the release's name; "" for none
    std::int64_t number = 0;
};
extern trust_t trust;

// Takes the built-in keys, which are set when the program is built.
void trust_built_in_keys();
// A key on the command line, its text or the path of its file, in the place of the built-in ones. False if it is none;
// `problem` says why.
bool trust_key(const std::string& given, std::string& problem);

// Looks at a catalogue before a row of it is read. "" if it may be taken; else what is wrong with it, in words that can
// stand behind a server's name. `now` in seconds since 1970.
std::string why_not_trusted(const std::string& catalogue_path, const std::string& signature_path,
                            const std::string& release_on_offer, std::int64_t now);
// The catalogue that was looked at last was whole and is taken: none that is older will be.
void note_trusted_release();
