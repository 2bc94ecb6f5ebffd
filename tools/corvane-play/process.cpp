#include "corvane-play/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::play {

bool isExecutable(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

std::string findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return isExecutable(name) ? name : "";
    }
    const char* const search = ::getenv("PATH");
    for (const std::string& directory : strExplode(search == nullptr ? "" : search, ":")) {
        std::string path = concatenate(directory.empty() ? "." : directory, "/", name);
        if (isExecutable(path)) {
            return path;
        }
    }
    return "";
}

Process::Process(const std::vector<std::string>& arguments, Output output) {
    std::array<int, 2> ends{-1, -1};
    if (output == Output::Piped && ::pipe(ends.data()) != 0) {
        throw IOException("pipe() fail", errno);
    }
    FileDesc writing(ends[1]);
    output_ = FileDesc(ends[0]);
    if (output == Output::Piped) {
        ::fcntl(output_, F_SETFD, FD_CLOEXEC);
    }
    pid_ = ::fork();
    if (pid_ == 0) {
        become(arguments, writing);
    }
    if (pid_ == -1) {
        throw IOException("fork() fail", errno);
    }
    ::setpgid(pid_, pid_);  // also here: it may be stopped before it has done so itself
}

Process::~Process() { stop(); }

void Process::become(const std::vector<std::string>& arguments, int outputEnd) const {
    ::setpgid(0, 0);
    if (outputEnd == -1) {
        becomeProgram(arguments, StandardStreams::NullDevice);
    }
    ::dup2(outputEnd, STDOUT_FILENO);
    ::dup2(outputEnd, STDERR_FILENO);
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    closeAll(STDERR_FILENO + 1);
    resetSignals();
    std::vector<char*> argv;
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));  // NOLINT: execv does not write to it
    }
    argv.push_back(nullptr);
    ::execv(argv[0], argv.data());
    ::_exit(255);
}

std::optional<int> Process::status() {
    int status = 0;
    if (!status_ && ::waitpid(pid_, &status, WNOHANG) == pid_) {
        status_ = status;
    }
    return status_;
}

void Process::stop(std::chrono::milliseconds patience) {
    constexpr std::chrono::milliseconds step(20);
    if (status()) {
        return;
    }
    ::kill(-pid_, SIGTERM);
    for (auto waited = step; !status() && waited < patience; waited += step) {
        ::poll(nullptr, 0, static_cast<int>(step.count()));
    }
    if (!status()) {
        ::kill(-pid_, SIGKILL);
        int last = 0;
        ::waitpid(pid_, &last, 0);
        status_ = last;
    }
}

}  // namespace corvane::play
