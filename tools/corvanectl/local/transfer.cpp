#include "corvanectl/local/transfer.h"

#include <algorithm>
#include <iostream>
#include <optional>

#include "corvanectl/exit_status.h"
#include "corvanectl/local/reason.h"
#include "corvanectl/local_file.h"
#include "corvanectl/output.h"
#include "corvanectl/progress.h"
#include "corvanectl/remote_file.h"
#include "corvanectl/server_path.h"
#include "corvanectl/session.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

struct GetOptions {
    LeftOut leftOut = LeftOut::Refused;
    Existing existing = Existing::Refused;
};

// Takes the options in front of the names.
GetOptions takeOptions(std::vector<std::string>& parameters) {
    GetOptions options;
    for (; !parameters.empty(); parameters.erase(parameters.begin())) {
        if (parameters.front() == "--bytes") {
            options.leftOut = LeftOut::ReadOneByOne;
        } else if (parameters.front() == "--force") {
            options.existing = Existing::Replaced;
        } else {
            break;
        }
    }
    if (parameters.empty() || parameters.size() > 2) {
        throw Exception("wrong number of parameters, see 'corvanectl help get'");
    }
    return options;
}

void requireCarried(const std::string& local, const std::string& data) {
    const std::size_t at = data.find_first_of(std::string_view("\0\x01", 2));
    if (at != std::string::npos) {
        throw Exception(
            format("'%s' has the byte 0x%02x at offset %zu, which no request can carry; "
                   "nothing was sent",
                   local.c_str(), static_cast<unsigned>(data[at]), at));
    }
}

std::string remoteTarget(const Endpoint& endpoint, const std::string& path,
                         const std::string& local) {
    const std::string remote = withSlashes(path.empty() ? namePart(local) : path);
    Session session(endpoint);
    const bool isInside =
        !path.empty() && (endsWith(remote, "/") || isServersDirectory(session, remote));
    std::string target = isInside ? inDirectory(remote, namePart(local)) : remote;
    requireExactName(target);
    return target;
}

// The reply to a command; a failure, and its reason, has been reported then.
Reply ask(const Invocation& invocation, const std::string& command,
          const std::vector<std::string>& parameters, const std::string& data = "") {
    const FailureLog log(queryForLog(invocation.log, invocation.endpoint.port));
    Reply reply;
    std::string why;
    {
        ProgressLine progress;
        Session session(invocation.endpoint, progress.observer());
        reply = session.ask(command, parameters, data);
        if (!reply.ok) {
            why = reasonFor(invocation, log, session.ownAddress(), session.staysOnThisMachine(),
                            command);
        }
    }
    if (!reply.ok) {
        std::cerr << "corvanectl: " << describeFailure(command, reply, why) << '\n';
    }
    return reply;
}

std::string complete(const Endpoint& endpoint, const std::string& remote, std::string text,
                     LeftOut leftOut) {
    ProgressLine progress;
    Session session(endpoint);
    return completeText(
        session, remote, std::move(text), leftOut,
        [&progress](std::size_t done, std::size_t total) { progress.show(done, total); });
}

}  // namespace

int put(const Invocation& invocation) {
    const std::string& local = invocation.parameters.front();
    const std::string data = readLocalFile(local);
    requireCarried(local, data);
    const std::string remote =
        remoteTarget(invocation.endpoint,
                     invocation.parameters.size() > 1 ? invocation.parameters[1] : "", local);
    return ask(invocation, "write", {remote}, data).ok ? succeeded : answeredFailed;
}

int get(const Invocation& invocation) {
    std::vector<std::string> names = invocation.parameters;
    const GetOptions options = takeOptions(names);
    const std::string remote = withSlashes(names.front());
    const std::string local =
        localTarget(names.size() > 1 ? names[1] : "", namePart(remote), options.existing);
    Reply reply = ask(invocation, "readText", {remote});
    if (!reply.ok) {
        return answeredFailed;
    }
    std::string text = reply.details.empty() ? "" : std::move(reply.details.front().value);
    writeLocalFile(local, complete(invocation.endpoint, remote, std::move(text), options.leftOut),
                   options.existing);
    return succeeded;
}

}  // namespace corvane::ctl::local
