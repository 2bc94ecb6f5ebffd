// A library to preload into the server: its wall clock jumps by days with every look at it,
// forwards and backwards. The steady clock goes on as ever, but is ahead by as many seconds as the
// file has bytes that STEADY_CLOCK_AHEAD names, so that a test need not wait for it.
#include <dlfcn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <time.h>

#include <random>

namespace {

constexpr time_t day = 24L * 60 * 60;  // seconds

// How far off the clock is at the next look.
time_t jump() {
    static std::minstd_rand dice{5};  // a failure must come back
    static std::uniform_int_distribution<time_t> days{-1000, 1000};
    return days(dice) * day;
}

time_t ahead() {
    struct stat file {};
    const char* path = ::getenv("STEADY_CLOCK_AHEAD");
    return path != nullptr && ::stat(path, &file) == 0 ? file.st_size : 0;
}

timespec wallClock() {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return now;
}

}  // namespace

extern "C" {

int clock_gettime(clockid_t clock, timespec* now) noexcept {
    using Function = int (*)(clockid_t, timespec*);
    static const auto real = reinterpret_cast<Function>(::dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = real(clock, now);
    if (result == 0 && clock == CLOCK_REALTIME) {
        now->tv_sec += jump();
    }
    if (result == 0 && clock == CLOCK_MONOTONIC) {
        now->tv_sec += ahead();
    }
    return result;
}

int gettimeofday(timeval* now, void* /*zone*/) noexcept {
    const timespec precise = wallClock();
    *now = {precise.tv_sec, static_cast<suseconds_t>(precise.tv_nsec / 1000)};
    return 0;
}

time_t time(time_t* now) noexcept {
    const time_t second = wallClock().tv_sec;
    if (now != nullptr) {
        *now = second;
    }
    return second;
}

}  // extern "C"
