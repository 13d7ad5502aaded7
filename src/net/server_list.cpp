#include "net/server_list.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

#include "files/xmap.h"
#include "net/server_address.h"
#include "runtime/log.h"
#include "runtime/startup.h"
#include "runtime/xtim.h"

static const int list_versions[] = {820, 0};

server_list_t server_list;

// Behind the keyword. False for a server that cannot be asked for anything, as where the list ends before its folder:
// one bad record must not spoil the others.
static bool read_server(xmap_class& list, int n) {
    std::string folder;
    list.TXT_str_scan_eoln(&server_list.server_name[n]);
    list.TXT_str_scan_eoln(&folder);
    list.TXT_str_scan_eoln(&server_list.server_desc[n]);
    server_list.server_path[n] = folder + server_list.install_name + "/";
    server_address address;
    if (read_server_address(server_list.server_name[n], address).empty() && folder.starts_with('/')) return true;
    xer << "Left out of the server list: " << server_list.server_name[n] << ' ' << folder << "\n";
    return false;
}

int read_server_list(const std::string& path) {
    xmap_class list(path);
    if (!list.mem_start || list.check_file(file_text, list_versions, "SERVERS", nullptr) == 0) return -1;
    int count = 0;
    std::fill(std::begin(server_list.left_at), std::end(server_list.left_at), 0.0f);
    while (!list.at_end()) {
        if (is_white(*list.mem_ptr))
            ++list.mem_ptr;
        else if (list.TXT_token_match("BETA"))
            list.TXT_str_scan_eoln(&server_list.install_name);
        else if (list.TXT_token_match("ENDOFLIST"))
            break;
        else if (!list.TXT_token_match("SERVER"))
            list.TXT_eoln_skip();
        else if (read_server(list, count))
            count = std::min(count + 1, max_servers);
    }
    return count;
}

int pick_server_biased(int count) {
    if (count < 1) return 0;
    // The top value of the generator makes slightly more than 1, hence the bounds.
    return std::clamp(static_cast<int>(count * std::pow(random_unit(), 1.5)), 0, count - 1);
}

int pick_server_plain(int count) {
    return count < 2 ? 0 : std::rand() % count;
}

static bool was_left(int server) {
    constexpr float seconds = 300;
    const float at = server_list.left_at[server];
    return at > 0 && xtim.real_time < at + seconds;
}

int pick_other_server(int count, unsigned not_these) {
    for (const bool any : {false, true}) {
        std::vector<int> others;
        for (int server = 0; server < count; ++server)
            if (!(not_these >> server & 1) && (any || !was_left(server))) others.push_back(server);
        if (!others.empty())
            return others[static_cast<std::size_t>(pick_server_biased(static_cast<int>(others.size())))];
    }
    return pick_server_biased(count);
}

int leave_server(int count, int server) {
    server_list.left_at[server] = std::max(xtim.real_time, 0.001f);  // 0 is the sign of none
    return pick_other_server(count, 0);
}
