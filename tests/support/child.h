// child.h: a process of its own for what this one must not do, or what only another process can see.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <functional>

// What `act` returns is the exit status, which is returned; -1 if the child ended in another way.
inline int in_child(const std::function<int()>& act) {
    const pid_t child = fork();
    if (child == 0) _exit(act());
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
