// The preferences: a file that anyone may have edited is read; what is then written must read back the same.
#include <cstdlib>

#include "app/pref.h"
#include "engine/stg.h"
#include "files/scan.h"
#include "fuzz/fuzz.h"
#include "net/proxy.h"
#include "runtime/cmdline.h"
#include "support/scratch.h"

static void forget() {
    stg = stg_t{};
    dest_dir_path = proxy.proxy_host = proxy.proxy_port_str = "";
    proxy.proxy_port = 0;
}

static std::string settings() {
    std::string all;
    for (const int number :
         {stg.use_max_cpu, stg.rename_folder, stg.stream_count, stg.log_actions, stg.always_ask_dir, proxy.proxy_port})
        all += std::to_string(number) + "\n";
    return all + dest_dir_path + "\n" + proxy.proxy_host + "\n" + proxy.proxy_port_str;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const scratch home;
    setenv("XDG_CONFIG_HOME", home.path().c_str(), 1);
    cmdline.clear();
    home.write("velaris/Velaris Installer.prf", std::string(view_of(data, size)));
    const bool alive = survives([] {
        forget();
        pref.IO_set(pref_installer, scan_read);
        const std::string read = settings();
        pref.IO_set(pref_installer, scan_write);
        forget();
        pref.IO_set(pref_installer, scan_read);
        must(settings() == read, "what is written reads back the same");
    });
    must(alive, "no preference file ends the run");
    return 0;
}
