#include "engine/destination.h"

#include <unistd.h>

#include <utility>

std::string dest_dir_path;

static struct {
    std::shared_ptr<const beneath_folder> folder;
    std::string way;
} held;  // for an install

std::shared_ptr<const beneath_folder> destination_folder() {
    return held.folder ? held.folder : std::make_shared<const beneath_folder>(dest_dir_path);
}

void hold_destination() {
    if (held.folder) return;
    auto folder = destination_folder();
    if (folder->error() != 0) return;
    held.way = folder->way_through_kernel();
    if (access(held.way.c_str(), F_OK) != 0) held.way = dest_dir_path;  // as where there is no /proc
    held.folder = std::move(folder);
}

void let_go_of_destination() {
    held = {};
}

std::string way_to_destination() {
    return held.folder ? held.way : dest_dir_path;
}
