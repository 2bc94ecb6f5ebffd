#include "app/detach.h"

#include <fcntl.h>
#include <unistd.h>

#include <initializer_list>

namespace corvane {
namespace {

// Lets the parent end. A fork that fails ends the process as well: it is not told apart.
void goOnInChild() {
    if (::fork() != 0) {
        ::_exit(0);
    }
}

}  // namespace

void ensureStandardDescriptors() {
    int fd = 0;
    do {
        fd = ::open("/dev/null", O_RDWR);  // gets the lowest number that is free
    } while (fd != -1 && fd <= STDERR_FILENO);
    if (fd != -1) {
        ::close(fd);
    }
}

void detachFromTerminal() {
    goOnInChild();
    ::setsid();
    goOnInChild();
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::close(fd);
    }
    ensureStandardDescriptors();
}

}  // namespace corvane
