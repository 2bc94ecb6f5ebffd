#include "corvanectl/local/check_machine.h"

#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstring>

#include "platform/child.h"
#include "platform/opener.h"
#include "platform/port_users.h"
#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::checks {
namespace {

using Port = ServerState::Port;

constexpr std::chrono::seconds patience{5};

std::string holderOf(const platform::PortUser& user) {
    if (!user.process) {
        return user.user ? format("a program of user %u", *user.user)
                         : "a connection that has ended";
    }
    return format("process %d (%s)", *user.process,
                  platform::processInfo(*user.process).executable.c_str());
}

// What the tool says when it is asked for the size of the screen; empty when that works.
std::string complaintOf(const std::string& tool) {
    try {
        Child child(Child::Capture::OutputAndErrors, Child::Group::Own, [&tool] {
            char* const arguments[] = {const_cast<char*>(tool.c_str()),  // NOLINT: execv wants it
                                       const_cast<char*>("-a"), nullptr};
            ::execv(tool.c_str(), arguments);
        });
        const Deadline deadline = std::chrono::steady_clock::now() + patience;
        if (!child.waitFor(deadline)) {
            return "it does not end";
        }
        return child.exitCode() == 0 ? "" : trim(child.wholeErrors(deadline));
    } catch (const Exception& e) {
        return e.message;
    }
}

bool isThere(const std::string& path) { return ::access(path.c_str(), F_OK) == 0; }

std::string megabytes(const struct statvfs& info) {
    return format("%llu MB",
                  static_cast<unsigned long long>(info.f_bavail) * info.f_frsize / 1'000'000);
}

// Those that a user's log-in goes through, of the systems that have them.
std::vector<std::string> enabledStarts(const std::string& home) {
    const std::string unit = "/graphical-session.target.wants/corvane.service";
    std::vector<std::string> found;
    for (const std::string& path :
         {concatenate(home, "/.config/systemd/user", unit), "/etc/systemd/user" + unit,
          home + "/.config/autostart/corvane.desktop",
          std::string("/etc/xdg/autostart/corvane.desktop"),
          home + "/Library/LaunchAgents/example.corvane.plist",
          std::string("/Library/LaunchAgents/example.corvane.plist")}) {
        if (isThere(path)) {
            found.push_back(path);
        }
    }
    return found;
}

// What the loader says of the tool needs no screen, but the package's dependencies.
std::string mendingOf(const std::string& complaint) {
    const bool lacksLibrary = complaint.find("shared librar") != std::string::npos ||
                              complaint.find("Library not loaded") != std::string::npos;
    return lacksLibrary ? "install what it needs: the whole package, with its dependencies"
                        : "run the server, and this, in the session with the screen";
}

}  // namespace

Findings server(const Installation& installation) {
    const ServerState& state = installation.state;
    if (state.port == Port::Corvane) {
        return {fine(format("running as process %d on %s", *state.process, state.address.c_str()))};
    }
    if (state.port == Port::Hidden) {
        return {
            fine(format("somebody else's program listens on port %d", installation.query.port))};
    }
    return {wrong(format("not running on port %d", installation.query.port),
                  "start it: corvane, or systemctl --user start corvane")};
}

Findings port(const Installation& installation) {
    const int asked = installation.query.port;
    Findings findings;
    const int configured = installation.configuration.numberOf("PORT", 54321);
    if (configured != asked && configured > 0) {
        findings.push_back(
            wrong(format("the configuration has PORT=%d, this looks at %d", configured, asked),
                  format("ask with --port %d", configured)));
    }
    if (installation.state.isRunning() || installation.state.port == Port::Free) {
        return findings;
    }
    for (const platform::PortUser& user : platform::portUsers(asked)) {
        const bool listens = user.state == platform::PortUser::State::Listening;
        findings.push_back(wrong(
            format(
                "%s has port %d: %s", holderOf(user).c_str(), asked,
                listens
                    ? "it listens there"
                    : concatenate("its connection to ", user.remote, " goes out from it").c_str()),
            listens ? "end it, or set another PORT, in the application as well"
                    : "wait for its end, and reserve the port: net.ipv4.ip_local_reserved_ports"));
    }
    return findings;
}

Findings windowTool(const Installation& installation) {
    const std::string tool = installation.directory + "cvnwinfo";
    if (installation.directory.empty() || ::access(tool.c_str(), X_OK) != 0) {
        return {wrong(tool + " is not there or cannot be executed",
                      "the commands about windows fail; install the whole package")};
    }
    if (!installation.isTrusted) {
        return {fine(tool + " is there, and not run here: the server is another user's")};
    }
    const std::string complaint = complaintOf(tool);
    if (complaint.empty()) {
        return {fine(tool + " sees the screen")};
    }
    return {wrong(concatenate(tool, " says: ", complaint), mendingOf(complaint))};
}

Findings opener(const Installation& installation) {
    const std::string program = platform::openerProgram(installation.directory);
    if (program.empty() || ::access(program.c_str(), X_OK) != 0) {
        return {wrong("no program that opens documents and addresses: " +
                          (program.empty() ? "xdg-open or gio" : program),
                      "install it (xdg-utils), or the whole package")};
    }
    return {fine(program)};
}

Findings log(const Installation& installation) {
    const std::vector<std::string> found = foundLogs(installation.query);
    const std::string path = !installation.state.log.empty() ? installation.state.log
                             : !found.empty()                ? found.front()
                                                             : "";
    const bool inOwn =
        !installation.directory.empty() && ::access(installation.directory.c_str(), W_OK) == 0;
    const std::string directory = !path.empty() ? path.substr(0, path.rfind('/') + 1)
                                  : inOwn       ? installation.directory
                                                : installation.query.home;
    struct statvfs info {};
    constexpr unsigned long long least = 100'000'000;
    if (directory.empty() || ::statvfs(directory.c_str(), &info) != 0 ||
        (path.empty() && ::access(directory.c_str(), W_OK) != 0)) {
        return {wrong("nowhere to write it: neither beside the server nor in the home directory",
                      "set HOME, or make one of both writable; the server does not start")};
    }
    const std::string place = path.empty() ? "none yet, it would be in " + directory : path;
    if (static_cast<unsigned long long>(info.f_bavail) * info.f_frsize < least) {
        return {wrong(concatenate(place, ", only ", megabytes(info), " are free"),
                      "make room; lines that do not fit are lost")};
    }
    return {fine(concatenate(place, ", ", megabytes(info), " free"))};
}

Findings starts(const Installation& installation) {
    const std::vector<std::string> found = enabledStarts(installation.query.home);
    if (found.size() > 1) {
        return {wrong("several things start it: " + strImplde(found, ", "),
                      "keep one, the second server ends because the port is taken")};
    }
    return {fine(found.empty() ? "nothing starts it at log-in" : found.front())};
}

}  // namespace corvane::ctl::checks
