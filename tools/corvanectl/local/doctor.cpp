#include "corvanectl/local/doctor.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <iostream>

#include "corvanectl/display.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/input.h"
#include "corvanectl/local/check_machine.h"
#include "corvanectl/local/check_settings.h"
#include "platform/guarded_open.h"
#include "platform/port_users.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

constexpr auto table = std::to_array<Check>({
    {"configuration", checks::configurationFile},
    {"keys", checks::keys},
    {"values", checks::values},
    {"folders", checks::folders},
    {"port", checks::port},
    {"window tool", checks::windowTool},
    {"opener", checks::opener},
    {"log", checks::log},
    {"start", checks::starts},
    {"server", checks::server},
});

void print(std::string_view name, const Finding& finding, std::ostream& out) {
    out << (finding.isWrong ? "WRONG  " : "ok     ") << name << ": " << visible(finding.text);
    if (!finding.mend.empty()) {
        out << " -> " << visible(finding.mend);
    }
    out << '\n';
}

void readConfiguration(Installation& installation) {
    const std::string path = configurationIn(installation.directory);
    installation.configuration.path = path;
    if (path.empty()) {
        return;
    }
    const OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd == -1 || S_ISFIFO(file.info.st_mode)) {
        installation.obstacle = file.fd == -1 ? std::strerror(errno) : "it is a pipe";
    } else if (!S_ISCHR(file.info.st_mode)) {  // the null device has no settings, others no end
        try {
            installation.configuration = parseConfiguration(path, readInput(file.fd));
        } catch (const Exception& e) {
            installation.obstacle = e.message;
        }
    }
}

// That of the server that runs, else of the one that is installed.
std::string directoryOfServer(const Installation& installation) {
    if (!installation.state.directory.empty() &&
        installation.state.port == ServerState::Port::Corvane) {
        return installation.state.directory;
    }
    for (const std::string& directory : serverDirectories(installation.query.ownDirectory)) {
        if (::access((directory + "corvane").c_str(), X_OK) == 0 &&
            !endsWith(directory, "/bin/")) {  // the launcher there is no server
            return directory;
        }
    }
    return "";
}

}  // namespace

std::span<const Check> doctorChecks() { return table; }

bool report(const Installation& installation, std::span<const Check> checks, std::ostream& out) {
    bool isWell = true;
    for (const Check& check : checks) {
        const Findings findings = check.look(installation);
        if (findings.empty()) {
            print(check.name, fine("nothing wrong"), out);
        }
        for (const Finding& finding : findings) {
            isWell = isWell && !finding.isWrong;
            print(check.name, finding, out);
        }
    }
    return isWell;
}

Installation examine(const LogQuery& query) {
    Installation installation{query, serverState(query), "", {}, "", true};
    installation.directory = directoryOfServer(installation);
    installation.isTrusted = !installation.state.process ||
                             installation.directory != installation.state.directory ||
                             platform::processInfo(*installation.state.process).user == ::geteuid();
    readConfiguration(installation);
    return installation;
}

int doctor(const Invocation& invocation) {
    const LogQuery query = queryForLog(invocation.log, invocation.endpoint.port);
    return report(examine(query), doctorChecks(), std::cout) ? succeeded : answeredFailed;
}

}  // namespace corvane::ctl::local
