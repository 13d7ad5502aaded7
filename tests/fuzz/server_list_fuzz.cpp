// The list of mirrors.
#include "fuzz/fuzz.h"
#include "net/server_address.h"
#include "net/server_list.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const memory_file list(view_of(data, size));
    server_list.install_name = no_install_name;
    for (int i = 0; i < 16; ++i)
        server_list.server_name[i] = server_list.server_path[i] = server_list.server_desc[i] = "";
    survives([&] {
        const int count = read_server_list(list.path());
        must(count >= -1 && count <= max_servers, "there are as many servers as there is room for");
        for (int i = 0; i < count; ++i) {
            must(server_list.server_path[i].ends_with('/'), "a server's path ends in a slash");
            server_address address, again;
            must(read_server_address(server_list.server_name[i], address).empty() && address.port != 0 &&
                     read_server_address(address.origin(), again).empty() && again == address,
                 "a host can be asked, and is told as it was read");
        }
        for (int turn = 0; turn < 4; ++turn) {
            const int picked = turn % 2 ? pick_server_plain(count) : pick_server_biased(count);
            must(picked >= 0 && (picked < count || picked == 0), "the server picked is one of them");
        }
    });
    return 0;
}
