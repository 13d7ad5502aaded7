// parts.h: where files that take long lie while they come, so that a run that ends, however it ends, leaves the next one
// what it had: "SIGNATURE.part" in the user's cache folder. Nothing but the signature of what it expands to tells whether
// a part is any good; it is looked at like everything that comes.
// One run at a time has the parts; another one that is at work then keeps its files to itself.
// Threads: main thread only.
#pragma once

#include <cstdint>
#include <string>

// Where a file of about so many bytes is to be written; empty where it had better go to the temporary folder: it is small,
// there is no cache folder or no room in it, or another run has the parts.
std::string part_path(const std::string& signature, std::int64_t about_bytes);

// Removes the parts: all of them, as when an install is complete, or those that no one has gone on with for a month.
void sweep_parts(bool all);
