// build.h: makes a release from a reference copy of the product: for each region of the set a folder with one zip per
// file, in the reference copy's own tree, and "directory.txt.zip", the catalogue with every file's history.
//
//   catalogue of the last release -> index -> walk -> landmarks -> zips and rows -> rows of gone files -> names
//
// Every failure is a blunt fatal alert; a run has no state to resume and is simply repeated. The folders are built
// under names that end in ".unfinished" and get their own names only when the whole set is done, so what bears the name
// of a release is one. A leftover of an earlier run is removed.
#pragma once

// The regions of this edition's set, then the checklist for whoever publishes them. Takes src_fold, dst_fold_base,
// old_dir_path, first_release, release_name and release_number as they are set.
void build_install();

// The region in work, from start to end but for its final name.
void sub_install();
