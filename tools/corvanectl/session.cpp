#include "corvanectl/session.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "corvanectl/command_list.h"
#include "corvanectl/request.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

// What may be sent before a reply is read: less than any system keeps for a connection, so that
// neither side waits for the other one to read.
constexpr std::size_t requestsAhead = std::size_t{16} * 1024;

std::string requestFor(std::string_view command, const std::vector<std::string>& parameters,
                       const std::string& data) {
    return makeRequest(*findCommand(command), parameters, [&data] { return data; });
}

std::string readByteRequest(const std::string& file, std::size_t offset) {
    return requestFor("readByte", {file, std::to_string(offset)}, "");
}

}  // namespace

Session::Session(const Endpoint& endpoint, Observer observer)
    : connection_(endpoint, std::move(observer)) {}

Reply Session::ask(std::string_view command, const std::vector<std::string>& parameters,
                   const std::string& data) {
    connection_.restartTime();
    connection_.send(requestFor(command, parameters, data));
    return receive();
}

std::string Session::readBytes(const std::string& file, std::size_t first, std::size_t count) {
    const std::size_t longest = readByteRequest(file, first + count).size();
    const std::size_t atOnce = std::max<std::size_t>(1, requestsAhead / longest);
    std::string bytes;
    while (bytes.size() < count) {
        const std::size_t begin = first + bytes.size();
        const std::size_t end = std::min(begin + atOnce, first + count);
        std::string requests;
        for (std::size_t offset = begin; offset < end; ++offset) {
            requests += readByteRequest(file, offset);
        }
        connection_.restartTime();
        connection_.send(requests);
        for (std::size_t offset = begin; offset < end; ++offset) {
            const Reply reply = receive();
            // All replies are taken, those behind a failure for nothing.
            if (reply.ok && !reply.details.empty() && first + bytes.size() == offset) {
                bytes += static_cast<char>(toLong(reply.details.front().value, 0));
            }
        }
        if (first + bytes.size() != end) {
            break;
        }
    }
    return bytes;
}

Reply Session::receive() {
    const std::optional<std::string> text = connection_.receive();
    if (!text) {
        throw Exception("the server has closed the connection without a reply");
    }
    return parseReply(*text);
}

bool isReadableFile(Session& session, const std::string& path) {
    // An empty file has no byte, but a text.
    return session.ask("readByte", {path, "0"}).ok || session.ask("readText", {path}).ok;
}

bool isServersDirectory(Session& session, const std::string& path) {
    return session.ask("listDir", {path}).ok;
}

}  // namespace corvane::ctl
