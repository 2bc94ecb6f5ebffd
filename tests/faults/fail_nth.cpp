// The plan of the fault, and the count of the calls.
#include "faults/fail_nth.h"

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace corvane::faults {
namespace {

struct Plan {
    std::string_view call;
    long nth = 0;
    int error = 0;
    const char* report = nullptr;
};

const char* variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "" : value;
}

long number(const char* name) { return std::strtol(variable(name), nullptr, 10); }

const Plan& plan() {
    static const Plan fromEnvironment{variable("CORVANE_FAULT_CALL"), number("CORVANE_FAULT_NTH"),
                                      static_cast<int>(number("CORVANE_FAULT_ERRNO")),
                                      variable("CORVANE_FAULT_REPORT")};
    return fromEnvironment;
}

pid_t armedProcess = 0;
long calls = 0;

// What runs at the exit of the process, such as the notes of a coverage build, is left alone.
void disarm() { armedProcess = -1; }

}  // namespace

void arm() {
    if (armedProcess == 0) {
        static_cast<void>(plan());
        armedProcess = ::getpid();
        static_cast<void>(std::atexit(disarm));
    }
}

namespace {

// By system calls, which no fault reaches.
void report() {
    const long fd = ::syscall(SYS_openat, AT_FDCWD, plan().report, O_WRONLY | O_CREAT, 0666);
    ::syscall(SYS_write, fd, plan().call.data(), plan().call.size());
    ::syscall(SYS_close, fd);
}

}  // namespace

bool isTheOne(std::string_view call) {
    if (armedProcess <= 0 || plan().call != call || ::getpid() != armedProcess ||
        ++calls != plan().nth) {
        return false;
    }
    report();
    errno = plan().error;
    return true;
}

int faultError() { return plan().error; }

}  // namespace corvane::faults
