// sync.h: what is to outlast a power cut. A rename may reach the disk before the bytes of what was renamed: who needs
// both or neither syncs first. One sync of the volume costs less than one of each of many files.
// Results: 0 or errno.
#pragma once

#include <string>

int sync_file(const std::string& path);      // the bytes of a file, or the names in a folder
int sync_volume(const std::string& folder);  // all that anybody has written to the volume that holds the folder
