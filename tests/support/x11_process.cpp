#include "support/x11_process.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace corvane::x11test {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int lookAgainMilliseconds = 5;

[[noreturn]] void throwSystemError(const std::string& what) {
    throw std::runtime_error(what + ": " + std::strerror(errno));
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Runs in the child between fork and exec.
[[noreturn]] void becomeProgram(char* const* arguments, char* const* variables, int output,
                                int errors) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int input = open("/dev/null", O_RDONLY);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    dup2(errors, STDERR_FILENO);
    execvpe(arguments[0], arguments, variables);
    constexpr std::string_view message = "the program cannot be started\n";
    static_cast<void>(!write(STDERR_FILENO, message.data(), message.size()));
    _exit(127);
}

// Appends what can be read now; false at the end of the input.
bool readSome(int descriptor, std::string& text) {
    std::array<char, 4096> buffer;
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0) {
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return count > 0;
}

void readBoth(Descriptor& output, Descriptor& errors, Outcome& outcome) {
    const auto deadline = Clock::now() + patience;
    while (output.number() >= 0 || errors.number() >= 0) {
        const auto left =
            std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        std::array<pollfd, 2> ready = {
            {{output.number(), POLLIN, 0}, {errors.number(), POLLIN, 0}}};
        if (left.count() <= 0 ||
            poll(ready.data(), ready.size(), static_cast<int>(left.count())) <= 0) {
            throw std::runtime_error("the program did not end in time");
        }
        if (ready[0].revents != 0 && !readSome(output.number(), outcome.output)) {
            output.close();
        }
        if (ready[1].revents != 0 && !readSome(errors.number(), outcome.errors)) {
            errors.close();
        }
    }
}

}  // namespace

Environment::Environment() {
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        const std::size_t sign = text.find('=');
        if (sign != std::string_view::npos) {
            set(std::string(text.substr(0, sign)), std::string(text.substr(sign + 1)));
        }
    }
}

std::vector<std::string> Environment::strings() const {
    std::vector<std::string> result;
    for (const auto& [name, value] : variables_) {
        std::string& entry = result.emplace_back(name);
        entry += "=";
        entry += value;
    }
    return result;
}

Descriptor& Descriptor::operator=(Descriptor&& other) noexcept {
    if (this != &other) {
        close();
        number_ = other.release();
    }
    return *this;
}

int Descriptor::release() { return std::exchange(number_, -1); }

void Descriptor::close() {
    if (number_ >= 0) {
        ::close(release());
    }
}

Pipe::Pipe() {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        throwSystemError("pipe");
    }
    readEnd = Descriptor(ends[0]);
    writeEnd = Descriptor(ends[1]);
}

ChildProcess::ChildProcess(const std::vector<std::string>& command, const Environment& environment,
                           int output, int errors) {
    std::vector<std::string> words = command;
    std::vector<std::string> settings = environment.strings();
    const std::vector<char*> arguments = pointersTo(words);
    const std::vector<char*> variables = pointersTo(settings);
    pid_ = fork();
    if (pid_ == 0) {
        becomeProgram(arguments.data(), variables.data(), output, errors);
    }
    if (pid_ < 0) {
        throwSystemError("fork");
    }
}

ChildProcess::~ChildProcess() {
    if (hasEnded()) {
        return;
    }
    ::kill(pid_, SIGTERM);
    if (!waitUntil([this] { return hasEnded(); })) {
        kill();
    }
}

void ChildProcess::kill() {
    if (!hasEnded()) {
        ::kill(pid_, SIGKILL);
        waitpid(pid_, &status_, 0);
        pid_ = -1;
    }
}

bool ChildProcess::hasEnded() {
    if (pid_ > 0 && waitpid(pid_, &status_, WNOHANG) == pid_) {
        pid_ = -1;
    }
    return pid_ < 0;
}

int ChildProcess::wait() {
    if (!waitUntil([this] { return hasEnded(); })) {
        throw std::runtime_error("the program did not end in time");
    }
    return WIFEXITED(status_) ? WEXITSTATUS(status_) : 128 + WTERMSIG(status_);
}

Outcome runProgram(const std::vector<std::string>& command, const Environment& environment) {
    Pipe output;
    Pipe errors;
    ChildProcess child(command, environment, output.writeEnd.number(), errors.writeEnd.number());
    output.writeEnd.close();
    errors.writeEnd.close();
    Outcome outcome;
    readBoth(output.readEnd, errors.readEnd, outcome);
    outcome.status = child.wait();
    return outcome;
}

bool waitUntil(const std::function<bool()>& condition, int descriptor) {
    const auto deadline = Clock::now() + patience;
    while (!condition()) {
        if (Clock::now() > deadline) {
            return false;
        }
        pollfd ready = {descriptor, POLLIN, 0};
        poll(&ready, 1, lookAgainMilliseconds);
    }
    return true;
}

}  // namespace corvane::x11test
