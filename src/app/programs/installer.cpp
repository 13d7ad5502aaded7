// Velaris Installer: installs and updates a copy of the simulator, in a window or on a terminal.
#include <cstring>

#include "app/console/console.h"
#include "app/window/window.h"

static bool wants(int argc, char** argv, const char* option) {
    for (int i = 1; i < argc; ++i)
        if (std::strcmp(argv[i], option) == 0) return true;
    return false;
}

int main(int argc, char** argv) {
    // The choice of the front end comes before everything else: it decides how an alert is shown.
    const bool informs = wants(argc, argv, "--help") || wants(argc, argv, "-h") || wants(argc, argv, "--version");
    return wants(argc, argv, "--console") || informs ? console_main(argc, argv) : window_main(argc, argv);
}
