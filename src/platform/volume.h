// volume.h: free space of the volume that holds a folder.
#pragma once

#include <cstdint>
#include <string>

// Bytes an ordinary user may still write on the volume of `path`. False when the folder does not exist or the system
// does not tell; `bytes` is then left alone.
bool volume_free_bytes(const std::string& path, std::uint64_t& bytes);
