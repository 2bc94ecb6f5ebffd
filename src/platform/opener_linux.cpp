#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <log4cpp/Category.hh>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/opener.h"
#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

using Clock = std::chrono::steady_clock;

// An opener that still runs after this time has taken the job.
constexpr std::chrono::milliseconds patience{1000};

constexpr int statusCannotExecute = 255;

bool inPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    for (const std::string& directory : strExplode(path == nullptr ? "" : path, ":")) {
        if (::access(format("%s/%s", directory.c_str(), program.c_str()).c_str(), X_OK) == 0) {
            return true;
        }
    }
    return false;
}

// The command that opens something on this desktop; empty when there is none.
std::vector<std::string> openerCommand(const std::string& target) {
    if (inPath("xdg-open")) {
        return {"xdg-open", target};
    }
    if (inPath("gio")) {
        return {"gio", "open", target};
    }
    return {};
}

bool isSchemeCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '+' || c == '-' || c == '.';
}

// Scheme and characters as RFC 3986 wants them; bytes beyond ASCII are let through, as UTF-8.
bool isAddress(std::string_view text) {
    const std::size_t colon = text.find(':');
    const std::string_view scheme = text.substr(0, colon);
    if (colon == std::string_view::npos || scheme.empty() ||
        std::isalpha(static_cast<unsigned char>(scheme.front())) == 0 ||
        !std::all_of(scheme.begin(), scheme.end(), isSchemeCharacter)) {
        return false;
    }
    return std::none_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte <= ' ' || byte == 0x7F ||
               std::string_view("\"<>\\^`{|}").find(c) != std::string_view::npos;
    });
}

// Keeps child signals pending while they are waited for, and has the server look for other children
// that ended meanwhile.
class ChildSignalHold {
  public:
    ChildSignalHold() {
        ::sigemptyset(&set_);
        ::sigaddset(&set_, SIGCHLD);
        ::sigprocmask(SIG_BLOCK, &set_, &previous_);
    }
    ~ChildSignalHold() {
        static_cast<void>(::raise(SIGCHLD));
        ::sigprocmask(SIG_SETMASK, &previous_, nullptr);
    }
    ChildSignalHold(const ChildSignalHold&) = delete;
    ChildSignalHold& operator=(const ChildSignalHold&) = delete;
    ChildSignalHold(ChildSignalHold&&) = delete;
    ChildSignalHold& operator=(ChildSignalHold&&) = delete;

    /// Returns at the next child signal or after `limit`.
    void wait(std::chrono::nanoseconds limit) const {
        const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(limit);
        const timespec timeout{seconds.count(), (limit - seconds).count()};
        ::sigtimedwait(&set_, nullptr, &timeout);
    }

  private:
    sigset_t set_{};
    sigset_t previous_{};
};

// The exit status of a child that ends within the patience (128 + signal when it was killed).
std::optional<int> statusWithin(const ChildSignalHold& hold, pid_t pid) {
    const auto deadline = Clock::now() + patience;
    while (true) {
        int status = 0;
        const pid_t ended = ::waitpid(pid, &status, WNOHANG);
        if (ended == pid) {
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        }
        const auto left = deadline - Clock::now();
        if (ended == -1 || left <= std::chrono::nanoseconds::zero()) {
            return std::nullopt;
        }
        hold.wait(left);
    }
}

}  // namespace

void openAddress(const std::string& target) {
    if (!isAddress(target)) {
        throw Exception(format("Cannot create CFURLRef for '%s'", target.c_str()));
    }
    const std::vector<std::string> command = openerCommand(target);
    if (command.empty()) {
        throw IOException(format("LSOpenCFURLRef error for file '%s': no program to open it with; "
                                 "install xdg-open (package xdg-utils) or gio",
                                 target.c_str()),
                          ENOENT);
    }
    const ChildSignalHold hold;
    const pid_t pid = startProgram(command, StandardStreams::NullDevice);
    const std::optional<int> status =
        pid == -1 ? std::optional<int>(statusCannotExecute) : statusWithin(hold, pid);
    if (status.value_or(0) != 0) {
        throw IOException(format("LSOpenCFURLRef error for file '%s'", target.c_str()), *status);
    }
}

void openDocument(const std::string& path) {
    // A name that begins with "-" would be taken for an option of the opener.
    const std::vector<std::string> command =
        openerCommand(startsWith(path, "-") ? "./" + path : path);
    if (command.empty()) {
        static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.platform.open");
        log.warn("no program to open '%s' with; install xdg-open (package xdg-utils) or gio",
                 path.c_str());
        return;
    }
    startProgram(command, StandardStreams::NullDevice);
}

}  // namespace corvane
