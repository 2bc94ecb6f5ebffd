#include "server/virtual_time_linux.h"

#include <sys/epoll.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

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

}  // extern "C"
