// product.h: what this program is: the edition's four constants, version, fixed addresses, and the few facts of the
// running process that all the others read. Set before any thread starts.
// The version stands in the build's own file alone; support finds a release by its text, a catalogue holds its number.
#pragma once

#include <string>

// The edition, defined in one small file for each program. Never tested with the preprocessor.
extern const int is_net;        // 1: the files come over HTTP
extern const int is_dvd;        // 0, or the set 1 to 4
extern const int is_build;      // 1: a builder
extern const int install_type;  // kept beside the others; nothing depends on it

// The system that the build runs on, counted from 1: 1 Macintosh, 2 Windows, 3 Linux.
constexpr int platform_os = 3;

extern const char* const version_text;                  // "Velaris 9.00 Beta-19"
constexpr int version_number = VELARIS_VERSION_NUMBER;  // 90019; it and the text come from the project's version
extern const char* const build_date;                    // as "Jan 21 2008 21:49:09"

extern const char* const built_in_public_keys;  // of whoever may sign releases, apart by blanks; "" for none
extern const char* const default_list_host;     // where "/serverlist.txt" is fetched
extern const char* const maker_site;            // the maker's web site, by name
extern const char* const download_page_url;     // where a newer installer lies
extern const char* const shop_url;              // shop, with the path and query of the product list

extern std::string app_path;  // base of relative paths; empty for the whole run, so that paths are absolute
extern int g_case_sensitive;  // 1 but for a disc edition: readers of our own data files mend the case of a path
extern int app_done;          // non-zero ends the frame loop
