#include "platform/interrupt.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "platform/folders.h"

// Process. Written by the handler, so only of types that it may touch.
static volatile sig_atomic_t first_signal = 0;
static int wake_pipe[2] = {-1, -1};
static termios shell_mode;
static volatile sig_atomic_t mode_changed = 0;

static void on_signal(int number) {
    const int kept = errno;  // of whatever was interrupted
    // Who presses Ctrl-C again has no patience for an orderly end; what must not stay behind is still put right.
    if (first_signal && number == SIGINT) {
        restore_terminal();
        remove_temp_folder();
        _exit(130);
    }
    if (!first_signal) {
        first_signal = number;
        [[maybe_unused]] const ssize_t ignored = write(wake_pipe[1], "", 1);
    }
    errno = kept;
}

void catch_interrupts() {
    if (wake_pipe[0] >= 0 || pipe2(wake_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
    struct sigaction action {};
    action.sa_handler = on_signal;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    // Who started us to outlive the terminal (nohup) has had this one ignored.
    struct sigaction before {};
    if (sigaction(SIGHUP, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr);
}

int interrupt_requested() {
    return first_signal;
}

int interrupt_wake_fd() {
    return wake_pipe[0];
}

// A process in the background is stopped by the system when it reads the terminal or changes its mode.
static bool owns_terminal() {
    return isatty(STDIN_FILENO) && tcgetpgrp(STDIN_FILENO) == getpgrp();
}

bool terminal_key_pressed(char key) {
    bool pressed = false;
    while (owns_terminal()) {
        pollfd waiting{STDIN_FILENO, POLLIN, 0};
        if (poll(&waiting, 1, 0) != 1 || !(waiting.revents & POLLIN)) break;
        char keys[64];
        const ssize_t size = read(STDIN_FILENO, keys, sizeof keys);
        if (size <= 0) break;
        pressed = pressed || std::find(keys, keys + size, key) != keys + size;
    }
    return pressed;
}

void watch_terminal_keys() {
    if (mode_changed || !owns_terminal() || tcgetattr(STDIN_FILENO, &shell_mode) != 0) return;
    termios by_key = shell_mode;
    by_key.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);  // Ctrl-C stays a signal
    by_key.c_cc[VMIN] = 1;
    by_key.c_cc[VTIME] = 0;
    static const bool restored_at_exit = std::atexit(restore_terminal) == 0;
    if (restored_at_exit && tcsetattr(STDIN_FILENO, TCSANOW, &by_key) == 0) mode_changed = 1;
}

void restore_terminal() {
    if (!mode_changed) return;
    mode_changed = 0;
    if (owns_terminal()) tcsetattr(STDIN_FILENO, TCSANOW, &shell_mode);
}
