// Velaris Installer: installs and updates a copy of the simulator, in a window or on a terminal.
#include "app/console/console.h"
#include "app/options.h"
#include "app/window/window.h"

int main(int argc, char** argv) {
    // The choice of the front end comes before everything else: it decides how an alert is shown.
    const bool on_terminal = stands_in(argc, argv, "--console") || only_informs(argc, argv);
    return on_terminal ? console_main(argc, argv) : window_main(argc, argv);
}
