// opensave.h: lists a folder with the kind of each item, by its extension: what the family's programs offer to open,
// and what the builder and the sweep walk through.
// Errors: a folder that cannot be listed is an empty one; a path without its "/" is a caller's mistake and fatal.
#pragma once

#include <string>
#include <vector>

enum : int {
    kind_any = 0,        // a file without a listed extension; as a request, everything
    kind_folder = 1,     // a folder without a listed extension; always listed
    kind_image = 2,      // .BMP .PNG; then .ACF .AFL .WPN .WAV .OBJ .FDR .SIT .SMO .FMS as 3 to 11
    kind_panel = 12,     // as a request only
    kind_text = 19,      // .TRA .CAR .SPA .REG .DSF .HGT .TXT are 13 to 19
    kind_as_given = 20,  // as a request: the names stay as they are
    kind_commands = 21   // as a request: names from the command tree, below `dir`
};

// `dir` is relative and ends in "/" (anything else is a fatal alert). Both lists are sorted by the bytes of the names.
// Hidden items are left out; a link to a folder is an item of kind 0. Returns the count, 0 for a folder that cannot be
// listed.
int opensave_getitems(const std::string& dir, int kind, std::vector<std::string>& names, std::vector<int>& kinds);

// True to keep the item. `item_kind` comes in as 1 for a folder, else 0, and goes out as the item's kind.
bool opensave_takeit(const std::string& dir, const std::string& name, int kind, int& item_kind);
