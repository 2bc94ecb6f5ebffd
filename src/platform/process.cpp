#include "platform/process.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "platform/descriptor_limit.h"
#include "platform/system.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

constexpr std::size_t maxArguments = 255;  // behind the program itself

void openNullDevice() {
    while (true) {
        const int fd = ::open("/dev/null", O_RDWR);
        if (fd == -1 || fd >= STDERR_FILENO) {
            return;
        }
    }
}

}  // namespace

void closeAll(int first) { platform::closeDescriptorsFrom(first); }

void resetSignals() {
    for (int sig = 1; sig < NSIG; ++sig) {
        static_cast<void>(::signal(sig, SIG_DFL));
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

void becomeProgram(const std::vector<std::string>& arguments, StandardStreams streams) {
    std::array<char*, maxArguments + 2> argv{};
    const std::size_t count = std::min(arguments.size(), maxArguments + 1);
    for (std::size_t i = 0; i < count; ++i) {
        argv[i] = const_cast<char*>(arguments[i].c_str());  // NOLINT: execvp does not write to it
    }
    if (streams == StandardStreams::OutputOnly) {
        closeAll(STDERR_FILENO);
        ::close(STDIN_FILENO);
    } else {
        closeAll(STDIN_FILENO);
    }
    if (streams != StandardStreams::Closed) {
        openNullDevice();
    }
    resetSignals();
    restoreDescriptorLimit();
    ::execvp(argv[0], argv.data());
    ::_exit(255);
}

pid_t startProgram(const std::vector<std::string>& arguments, StandardStreams streams) {
    prepareToWait();
    const pid_t pid = ::fork();
    if (pid == 0) {
        becomeProgram(arguments, streams);
    }
    return pid;
}

}  // namespace corvane
