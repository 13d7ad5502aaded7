// cmnd.h: the table of named commands that a key binding runs and that --cmnds prints. It stands here, below the keys,
// because the command line and the file listing read it.
// Ownership: the table owns its texts; an index stays valid for the process, as commands are added and never removed.
// Threads: main thread only.
#pragma once

#include <string>
#include <vector>

class cmnd_class {
  public:
    cmnd_class();  // the default table: one command that does nothing

    int get_cmnd_by_name(const std::string& name) const;  // index, -1 if unknown
    // Names of the commands and folders right below `path` ("sim/" lists "operation/"); a folder ends in "/".
    void get_cmds_in_path(const std::string& path, std::vector<std::string>& names) const;
    int add_cmd(const std::string& name, const std::string& description);  // path "DYNAMIC"; returns the index

    // An index that the table does not hold has no effect.
    void press_one(int index);     // goes down
    void press_always(int index);  // is held, each frame
    void release_one(int index);
    void single_press(int index);  // down and up at once

    struct command {
        std::string name;  // "cmnd_nothing"
        std::string path;  // "sim/operation/none"
        std::string description;
        int pressed = 0;      // times it went down
        int held_frames = 0;  // frames held since it went down; 0 when up
    };
    const std::vector<command>& all() const { return commands; }

  private:
    command* at(int index);  // null if the table does not hold it
    std::vector<command> commands;
};

extern cmnd_class cmnd;
