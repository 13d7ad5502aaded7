// sign_files.h: the signatures of all files of a copy, by all processors and in the lanes of each (md5_lanes.h). What a
// store of signatures knows and finds untouched is not read.
// A signature is of a file's bytes, or of a link's target text; a link itself is never followed, but the folders on
// the way may be links. Nothing but regular files is opened: a pipe would wait for its other end, a device would do who
// knows what.
// Threads: an object belongs to the main thread; the work is done by the pool's, or, where there is no pool, by the
// first wait() alone. Results are the same, whatever the number of processors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_identity.h"

class signature_store;
struct signing_work;

struct file_to_sign {
    std::string_view path;  // below the root; what it points to outlives the signing
    float kilobytes = 0;    // of 1000 bytes, as a guess: to begin with the large ones, and for the share that is done
};

enum class file_state {
    missing,     // nothing is there
    intact,      // a file or link, with its signature
    unreadable,  // a file whose content could not be read: `error` says why
    folder,
    odd  // neither file, link nor folder
};

struct signed_file {
    file_state state = file_state::missing;
    int error = 0;
    bool from_store = false;  // and not read now
    std::string signature;    // of what is intact
    file_identity identity;   // as it was before the first byte was read
};

class signing {
  public:
    // Begins. `store` may be null.
    signing(const std::string& root, std::vector<file_to_sign> files, const signature_store* store);
    ~signing();  // stops what still runs
    signing(const signing&) = delete;
    signing& operator=(const signing&) = delete;

    // True when every file is through, else after the time at the latest.
    bool wait(int timeout_ms);
    float share_done() const;                 // 0 to 1, by bytes as guessed and read
    std::string_view at_work() const;         // path of a file that was begun lately
    std::vector<signed_file> take_results();  // in the order of the files; once it is done

  private:
    std::unique_ptr<signing_work> work;
};
