// dirs.h: prepares the folders of an install: the road to the destination, a folder for every wanted file, the
// simulator's own folders, and room for the links of the two plug-in frameworks.
//
// A release may turn a file into a folder, or a folder into a file. What stands in the way is a file of an earlier
// release and has to go, but not before the user has agreed: the folders are made before the agreement is asked, and a
// refusal must leave every file where it was. So the work is parted: make_dirs passes over a folder whose place is
// taken, with all that lies below it, and clear_the_way, which runs after agreement and choice and before the first
// file is fetched, removes what is in the way and makes up for what was passed over.
// Considered and dropped: clearing in make_dirs (a refusal would have lost the file), and clearing when the file's own
// row is reached (withdrawn rows come last in a catalogue, after the files that need the folder).
#pragma once

#include <string>

int make_dirs();  // 0 after the first folder that could not be made: an alert has named it, and the install ends
void make_dir_error(const std::string& path, int err);

// Removes shipped files (and links) that stand in the place of a wanted folder, asking first where one was changed and
// the choice of files has not settled it; one that stays is told of as a folder that could not be made. Removes folders
// that stand in the place of a file to fetch if they hold nothing but withdrawn files. 0 if one holds anything else, or
// if a folder on the way to some file is a link that leads out of the destination: an alert has named it, nothing was
// removed, and the install cannot go on.
int clear_the_way();
