// The part of macOS's <sys/event.h> that this program uses, for tests on Linux: there
// kqueue_stand_in_linux.cpp stands in for the kernel. Values, types and signatures are those of
// macOS.
#pragma once

#include <sys/types.h>
#include <time.h>

#include <cstdint>

// NOLINTBEGIN: the names and the C constructs are the system's.
#define EVFILT_READ (-1)
#define EVFILT_SIGNAL (-6)

#define EV_ADD 0x0001
#define EV_DELETE 0x0002
#define EV_CLEAR 0x0020
#define EV_EOF 0x8000

struct kevent {
    std::uintptr_t ident;
    std::int16_t filter;
    std::uint16_t flags;
    std::uint32_t fflags;
    std::intptr_t data;
    void* udata;
};

extern "C" {
int kqueue();
int kevent(int kq, const struct kevent* changelist, int nchanges, struct kevent* eventlist,
           int nevents, const struct timespec* timeout);
}
// NOLINTEND
