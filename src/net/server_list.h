// server_list.h: the list of mirrors, "serverlist.txt", and how one is chosen.
// Form: the text header with version 820 and the title "SERVERS", then lines: "BETA name of the release" (before the
// servers, since each path is built from it), "FINAL name" (skipped: this is a beta-channel build), "SERVER host" with
// the folder and the text to show on the next two lines that are not blank, "ENDOFLIST". Other lines are skipped,
// and so is a server whose host or folder could not be asked for anything.
#pragma once

#include <string>

constexpr int max_servers = 10;  // an eleventh and later one lands at index 10, out of reach
constexpr char no_install_name[] = "Not Yet Scanned";

// What the last list that was read says; of the whole run.
struct server_list_t {
    std::string install_name = no_install_name;  // name of the release on offer
    std::string server_name[16];                 // host, with ":port" if not 80
    std::string server_path[16];                 // folder + install_name + "/"
    std::string server_desc[16];                 // text to show
    float left_at[16] = {};                      // real time at which it was left for another one; 0: it was not
};
extern server_list_t server_list;

// Number of servers, or -1 when the file cannot be opened or is of another version.
int read_server_list(const std::string& path);

// An index below `count`, 0 if that is none: with a bias to the top of the list, and plainly at random.
int pick_server_biased(int count);
int pick_server_plain(int count);  // with one server no random number is drawn
// With the bias, among those whose bits in `not_these` are clear and that were not left; where there is none, without
// regard to the one and then to the other.
int pick_other_server(int count, unsigned not_these);
// The server was silent, refused, or sent what is wrong: it is not chosen for five minutes while another one is there.
// Returns another one.
int leave_server(int count, int server);
