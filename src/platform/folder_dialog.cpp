#include "platform/folder_dialog.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <vector>

#include "platform/paths.h"

namespace {

bool is_installed(const char* program) {
    const char* path = std::getenv("PATH");
    for (const std::string_view folder : path_parts(path ? path : "/usr/local/bin:/usr/bin:/bin", ':'))
        if (access((std::string(folder) + "/" + program).c_str(), X_OK) == 0) return true;
    return false;
}

std::vector<std::string> dialog_command(const std::string& title, const std::string& start) {
    if (is_installed("zenity"))
        return {"zenity", "--file-selection", "--directory", "--title=" + title, "--filename=" + start};
    if (is_installed("kdialog")) return {"kdialog", "--title", title, "--getexistingdirectory", start};
    return {};
}

// Starts the helper with its output on a pipe; the read end, -1 on failure. It gets SIGPIPE and the mask of signals as
// a program of its own would, and what it complains about is of no interest to the user.
int start_helper(const std::vector<std::string>& command, pid_t& child) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return -1;
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);

    posix_spawn_file_actions_t files;
    posix_spawn_file_actions_init(&files);
    posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&files, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&files, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t defaults, none;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE);
    sigemptyset(&none);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    const int failed = posix_spawnp(&child, words[0], &files, &attributes, words.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&files);
    close(ends[1]);
    if (!failed) return ends[0];
    close(ends[0]);
    return -1;
}

// False when the program wants the dialog gone.
bool read_all(int fd, bool (*keep_open)(), std::string& text) {
    constexpr int frame_ms = 50;
    for (;;) {
        pollfd waiting = {fd, POLLIN, 0};
        const int ready = poll(&waiting, 1, frame_ms);
        if (ready == 0 && keep_open && !keep_open()) return false;
        if (ready <= 0) {
            if (ready < 0 && errno != EINTR) return true;
            continue;
        }
        char block[512];
        const ssize_t n = read(fd, block, sizeof block);
        if (n <= 0) return true;
        text.append(block, static_cast<std::size_t>(n));
    }
}

bool ended_well(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return false;
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

bool folder_dialog_available() {
    return !dialog_command("", "").empty();
}

folder_dialog_result run_folder_dialog(const std::string& title, const std::string& start, std::string& chosen,
                                       bool (*keep_open)()) {
    const std::vector<std::string> command = dialog_command(title, start);
    if (command.empty()) return folder_dialog_result::no_helper;
    pid_t child = 0;
    const int fd = start_helper(command, child);
    if (fd < 0) return folder_dialog_result::cancelled;
    std::string answer;
    if (!read_all(fd, keep_open, answer)) kill(child, SIGTERM);
    close(fd);
    if (!ended_well(child)) return folder_dialog_result::cancelled;
    if (!answer.empty() && answer.back() == '\n') answer.pop_back();
    while (answer.size() > 1 && answer.back() == '/')
        answer.pop_back();
    // Such names are legal here, but no path of the system may hold these bytes.
    if (answer.empty() || answer[0] != '/' || answer.find_first_of(":\\\r\n") != std::string::npos)
        return folder_dialog_result::cancelled;
    chosen = answer;
    return folder_dialog_result::chosen;
}
