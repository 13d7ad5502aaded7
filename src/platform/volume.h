// volume.h: free space of the volume that holds a folder. It is a hint for the user before an install, never a promise:
// others write too, and the last word is the disk's when a file is written.
#pragma once

#include <cstdint>
#include <string>

// Bytes an ordinary user may still write on the volume of `path`. False when the folder does not exist or the system
// does not tell; `bytes` is then left alone.
bool volume_free_bytes(const std::string& path, std::uint64_t& bytes);
