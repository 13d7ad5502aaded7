// signature_store.h: what was signed once is not read again while the file is the very one that was read. A cache for
// one destination: it may be deleted at any time, a damaged one is thrown away, and nothing is replaced or deleted on
// its word alone.
// Form: text. "VELARIS SIGNATURES 1", then a row for each file, "signature size mtime ctime device inode path", in the
// order of the catalogue; the last line is the MD5 of all before it. Written beside and renamed. Paths hold no line
// end.
// Considered and dropped: a database. All rows are read and written together, which text does as fast.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/file_identity.h"

struct stored_signature {
    std::string_view path;
    std::string_view signature;
    file_identity identity;
};

class signature_store {
  public:
    explicit signature_store(const std::string& file);  // reads; empty where there is none, or a damaged one
    // The signature of an untouched file; "" if it is not known.
    std::string_view find(std::string_view path, const file_identity& identity) const;
    std::size_t size() const { return rows.size(); }

  private:
    bool read_rows();
    std::string text;  // what the rows point into
    std::unordered_map<std::string_view, stored_signature> rows;
};

// Replaces the store. `signed_at`: when the first of them was signed, in nanoseconds since 1970. A file that changed
// less than two seconds before may change again within what its disk takes for the same moment, and is left out. 0 or
// errno.
int write_signature_store(const std::string& file, const std::vector<stored_signature>& rows, std::int64_t signed_at);

// Where the store of a destination is; "" where there is no place for one.
std::string signature_store_of(const std::string& destination);
