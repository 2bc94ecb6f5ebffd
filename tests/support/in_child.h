// Runs something in a process of its own, for what a process cannot undo.
#pragma once

#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

namespace corvane::test {

/// What `work` returns, 0 to 254, in a child; 255 when it throws or the child is killed.
template <typename Work>
int inChild(Work work) {
    const pid_t pid = ::fork();
    if (pid == 0) {
        try {
            ::_exit(work());
        } catch (...) {
            ::_exit(255);
        }
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) == -1 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 255;
}

}  // namespace corvane::test
