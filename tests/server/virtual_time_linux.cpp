#include "server/virtual_time_linux.h"

#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdint>

namespace corvane::test {
namespace {

VirtualTime* current = nullptr;

}  // namespace

VirtualTime::VirtualTime() : now_(std::chrono::steady_clock::now().time_since_epoch()) {
    current = this;
}

VirtualTime::~VirtualTime() { current = nullptr; }

void VirtualTime::pass(std::chrono::milliseconds length) {
    now_ += length;
    waits_.push_back(length);
    afterWait();
}

}  // namespace corvane::test

// These take the place of the C library's functions in this program.
extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    using namespace std::chrono;
    if (clock != CLOCK_MONOTONIC || corvane::test::current == nullptr) {
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, now));
    }
    const nanoseconds time = corvane::test::current->now();
    const seconds whole = duration_cast<seconds>(time);
    *now = {static_cast<time_t>(whole.count()), static_cast<long>((time - whole).count())};
    return 0;
}

int epoll_wait(int queue, epoll_event* events, int room, int timeout) {
    const bool isVirtual = corvane::test::current != nullptr && timeout > 0;
    const auto count = static_cast<int>(
        ::syscall(SYS_epoll_pwait, queue, events, room, isVirtual ? 0 : timeout, nullptr, 8));
    if (isVirtual && count == 0) {
        corvane::test::current->pass(std::chrono::milliseconds(timeout));
    }
    return count;
}

int pselect(int count, fd_set* readable, fd_set* writable, fd_set* exceptional,
            const timespec* timeout, const sigset_t* mask) {
    using namespace std::chrono;
    const nanoseconds length = timeout == nullptr
                                   ? nanoseconds()
                                   : seconds(timeout->tv_sec) + nanoseconds(timeout->tv_nsec);
    const bool isVirtual = corvane::test::current != nullptr && length > nanoseconds::zero();
    timespec real = timeout == nullptr || isVirtual ? timespec{} : *timeout;
    const std::array<std::uintptr_t, 2> maskAndSize{reinterpret_cast<std::uintptr_t>(mask), 8};
    const auto found =
        static_cast<int>(::syscall(SYS_pselect6, count, readable, writable, exceptional,
                                   timeout == nullptr ? nullptr : &real, maskAndSize.data()));
    if (isVirtual && found == 0) {
        corvane::test::current->pass(ceil<milliseconds>(length));
    }
    return found;
}

}  // extern "C"
