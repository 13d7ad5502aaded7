// copy_check.h: what would be published and could not be installed by everyone, or not only where it belongs: names
// that some system cannot have, two files at one place, links that lead out. What is wrong is a fatal alert that names
// it.
#pragma once

#include <string>
#include <string_view>

// Why Windows or macOS cannot have a file or folder of that name, in words; null where they can. The name of a release
// is held against it too.
const char* fault_of_name(std::string_view name);

// A release cannot be made from a copy in whose own path stands a text that decides over files: all of them would be
// left out, or taken for something else.
void check_reference_path();

// Each item of the walk, with its name and full path.
void check_name(const std::string& name, const std::string& path);

// A link must stay in its top folder, which is the destination of an installed copy.
void check_link(const std::string& path);

// Enters a chosen file, which is installed on `platform` as in a row of the catalogue, and its folders. Fatal where one
// system would get two files at one path, or two paths that differ in case alone: Windows and macOS take them for one.
void enter_installed_path(const std::string& path, int platform);
