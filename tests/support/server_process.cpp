#include "support/server_process.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <system_error>

#include "support/process_status.h"
#include "support/wait_until.h"

namespace corvane::test {
namespace {

namespace fs = std::filesystem;

/// Sanitizers report into files, so that nothing is lost with a closed standard error.
void reportInto(const char* variable, const std::string& path) {
    const char* before = ::getenv(variable);
    const std::string value =
        (before == nullptr ? "" : std::string(before) + ":") + "log_path=" + path;
    ::setenv(variable, value.c_str(), 1);
}

/// Another build of the server than the one of this build may be under test.
const char* serverExecutable() {
    const char* other = ::getenv("CORVANE_SERVER_EXECUTABLE");
    return other == nullptr ? CORVANE_EXECUTABLE : other;
}

void redirect(const std::string& path, int target) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    ::dup2(file, target);
    ::close(file);
}

}  // namespace

ServerProcess::ServerProcess(const Options& options) {
    directory_.directory("home");
    directory_.directory("tmp");
    fs::create_symlink(serverExecutable(), directory_ / "corvane");
    if (!options.ownConfiguration) {
        directory_.file("corvane.conf",
                        "PORT=0\nlog4cpp.pattern=%p %c %m%n\n" + options.configuration);
    }
    for (const auto& [name, text] : options.files) {
        directory_.program(name, text);
    }
    ::prctl(PR_SET_CHILD_SUBREAPER, 1);  // a detached server becomes a child of this process
    pid_ = ::fork();
    if (pid_ == 0) {
        becomeServer(options);
    }
    waitUntilServing();
}

void ServerProcess::becomeServer(const Options& options) const {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    redirect(directory_ / "stderr", STDERR_FILENO);
    if (options.standardOutput == -1) {
        redirect(directory_ / "stdout", STDOUT_FILENO);
    } else {
        ::dup2(options.standardOutput, STDOUT_FILENO);
    }
    ::close(STDIN_FILENO);
    ::open("/dev/null", O_RDONLY);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    ::setenv("HOME", home().c_str(), 1);
    ::setenv("TMPDIR", (directory_ / "tmp").c_str(), 1);
    reportInto("ASAN_OPTIONS", directory_ / "sanitizer");
    reportInto("UBSAN_OPTIONS", directory_ / "sanitizer");
    static_cast<void>(::chdir(directory_.path().c_str()));
    if (const char* rules = ::getenv("CORVANE_SERVER_PRELOAD"); rules != nullptr) {
        ::setenv("LD_PRELOAD", rules, 1);
    }
    options.prepare();
    const std::string program = directory_ / "corvane";
    ::execl(program.c_str(), program.c_str(), nullptr);
    ::_exit(127);
}

void ServerProcess::waitUntilServing() {
    const auto servesOrHasEnded = [this] {
        const bool hasEnded = !isRunning();
        return findPort() || hasEnded;
    };
    if (!waitUntil(servesOrHasEnded)) {
        throw std::runtime_error("the server does not serve:\n" + log() + output() + errors());
    }
    descriptorsAtStart_ = descriptors();
}

ServerProcess::~ServerProcess() {
    if (isRunning() || findDetached()) {
        ::kill(pid_, SIGKILL);
        try {
            wait();
        } catch (const std::runtime_error&) {
            ended_ = true;  // nothing more can be done
        }
    }
}

bool ServerProcess::findPort() {
    for (const std::string& text : {log(), errors()}) {
        const std::size_t line = text.find("Listening on ");
        if (line != std::string::npos && text.find('\n', line) != std::string::npos) {
            port_ = std::stoi(text.substr(text.find(':', line) + 1));
            return true;
        }
    }
    return false;
}

std::string ServerProcess::log() const {
    const std::string path = directory_ / "cv0.log";
    return fs::is_regular_file(path) ? readFile(path) : "";
}

std::vector<std::string> ServerProcess::logLines() const {
    std::istringstream text(log());
    std::vector<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool ServerProcess::hasLogged(std::string_view line) const {
    const std::vector<std::string> lines = logLines();
    return std::find(lines.begin(), lines.end(), line) != lines.end();
}

bool ServerProcess::waitForLog(std::string_view text) const {
    return waitUntil([this, text] { return log().find(text) != std::string::npos; });
}

void ServerProcess::signal(int number) const { ::kill(pid_, number); }

void ServerProcess::suspend() const {
    signal(SIGSTOP);
    if (!waitUntil([this] { return stateOf(pid_) == 'T'; })) {
        throw std::runtime_error("the server does not stop");
    }
}

bool ServerProcess::isRunning() {
    if (!ended_) {
        int status = 0;
        const pid_t result = ::waitpid(pid_, &status, WNOHANG);
        if (result != 0) {
            ended_ = true;
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
    }
    return !ended_;
}

int ServerProcess::wait() {
    if (!waitUntil([this] { return !isRunning(); })) {
        throw std::runtime_error("the server does not end:\n" + log());
    }
    return status_;
}

int ServerProcess::followDetached() {
    const int status = wait();
    if (!waitUntil([this] { return findPort() && findDetached(); })) {
        throw std::runtime_error("no detached server:\n" + log());
    }
    descriptorsAtStart_ = descriptors();
    return status;
}

bool ServerProcess::findDetached() {
    const std::string program = directory_ / "corvane" + '\0';
    for (const pid_t pid : allProcesses()) {
        // The process in between, if it has not ended yet, leads the session.
        const std::string commandLine =
            commandLineOf(pid);  // begins with a loader's where one runs it
        if (commandLine.find(program) != std::string::npos && ::getsid(pid) != pid) {
            pid_ = pid;
            ended_ = false;
        }
    }
    return !ended_;
}

std::string ServerProcess::sanitizerReport() const {
    std::string report;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_.path())) {
        if (entry.path().filename().string().rfind("sanitizer", 0) == 0) {
            report += readFile(entry.path());
        }
    }
    for (const char* sign : {"Sanitizer", "runtime error:"}) {
        if (errors().find(sign) != std::string::npos) {
            report += errors();
        }
    }
    return report;
}

}  // namespace corvane::test
