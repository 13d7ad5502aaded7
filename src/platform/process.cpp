#include "platform/process.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

// Between fork and exec only calls that are safe in a signal handler: another thread may have held any lock.
[[noreturn]] static void become(char* const* argv) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    signal(SIGPIPE, SIG_DFL);
    const int nowhere = open("/dev/null", O_RDWR);
    for (int fd = 0; fd <= 2; ++fd)
        dup2(nowhere, fd);
    close_range(3, ~0U, 0);
    execvp(argv[0], argv);
    _exit(127);
}

// The child's child does the work and falls to init, which buries it; the child itself is gone at once.
void spawn_detached(const std::vector<std::string>& argv) {
    if (argv.empty()) return;
    std::vector<char*> words;
    words.reserve(argv.size() + 1);
    for (const std::string& word : argv)
        words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);

    const pid_t child = fork();
    if (child == 0) {
        setsid();
        if (fork() == 0) become(words.data());
        _exit(0);
    }
    while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
    }
}

void open_in_browser(const std::string& url) {
    spawn_detached({"xdg-open", url});
}

void open_standard_descriptors() {
    // From below, as open takes the lowest number that is free.
    for (int fd = 0; fd <= 2; ++fd)
        if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) != fd) return;
}

void ignore_sigpipe() {
    signal(SIGPIPE, SIG_IGN);
}
