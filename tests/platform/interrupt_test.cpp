#include "platform/interrupt.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <csignal>
#include <initializer_list>

#include "platform/folders.h"
#include "support/child.h"
#include "support/scratch.h"

static bool readable(int fd, int timeout_ms) {
    pollfd waiting{fd, POLLIN, 0};
    return poll(&waiting, 1, timeout_ms) == 1 && (waiting.revents & POLLIN);
}

static void raise_each(std::initializer_list<int> numbers) {
    catch_interrupts();
    for (const int number : numbers)
        raise(number);
}

TEST(Interrupt, only_a_second_ctrl_c_ends_the_process_and_an_ignored_hang_up_stays_ignored) {
    const scratch disk;
    const auto end_twice = [&] {
        std::string temp;
        setenv("TMPDIR", disk.path().c_str(), 1);
        get_OS_abs_path(os_dir_temp, &temp);
        disk.write(temp.substr(disk.path().size()) + "0.zip", "half");
        return raise_each({SIGTERM, SIGTERM, SIGINT}), 0;
    };
    EXPECT_EQ(in_child(end_twice), 130);
    EXPECT_EQ(rmdir(disk.path().c_str()), 0) << "the temporary folder is left";
    EXPECT_EQ(in_child([] { return raise_each({SIGINT, SIGTERM, SIGHUP}), interrupt_requested(); }), SIGINT);
    signal(SIGHUP, SIG_IGN);  // as for a run that is to outlive its terminal
    EXPECT_EQ(in_child([] { return raise_each({SIGHUP}), interrupt_requested(); }), 0);
}

// Makes a new terminal the standard input of this process. Returns its far end, where a person types.
static int take_terminal() {
    int keyboard = -1, terminal = -1;
    setsid();
    if (openpty(&keyboard, &terminal, nullptr, nullptr, nullptr) != 0) return -1;
    ioctl(terminal, TIOCSCTTY, 0);
    dup2(terminal, STDIN_FILENO);
    return keyboard;
}

static bool typed(int keyboard, const char* keys, size_t size) {
    return write(keyboard, keys, size) == static_cast<ssize_t>(size) && readable(STDIN_FILENO, 10000);
}

TEST(TerminalKeys, a_key_is_seen_at_once_without_echo_and_the_terminal_is_given_back) {
    EXPECT_EQ(in_child([] {
                  const int keyboard = take_terminal();
                  termios before, during, after;
                  if (keyboard < 0 || tcgetattr(0, &before) != 0) return 1;
                  watch_terminal_keys();
                  watch_terminal_keys();  // must not take the changed mode for the shell's
                  if (tcgetattr(0, &during) != 0 || (during.c_lflag & (ICANON | ECHO))) return 2;
                  if (!(during.c_lflag & ISIG)) return 3;
                  if (terminal_key_pressed('q')) return 4;
                  if (!typed(keyboard, "xq", 2) || !terminal_key_pressed('q')) return 5;
                  if (terminal_key_pressed('q')) return 6;
                  if (!typed(keyboard, "x", 1) || terminal_key_pressed('q')) return 7;
                  if (readable(keyboard, 0)) return 8;
                  restore_terminal();
                  return tcgetattr(0, &after) == 0 && after.c_lflag == before.c_lflag ? 0 : 9;
              }),
              0);
}

TEST(TerminalKeys, input_from_elsewhere_is_not_touched) {
    EXPECT_EQ(in_child([] {
                  int ends[2];
                  if (pipe(ends) != 0 || dup2(ends[0], STDIN_FILENO) != 0) return 1;
                  watch_terminal_keys();
                  if (!typed(ends[1], "q", 1) || terminal_key_pressed('q')) return 2;
                  return readable(STDIN_FILENO, 0) ? 0 : 3;
              }),
              0);
}
