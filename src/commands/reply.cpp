// The reply document: one line of XML, whose exact bytes applications depend on.
#include <cstddef>

#include "commands/corvane_server.h"

namespace corvane {
namespace {

constexpr std::array<std::string_view, 5> entryKinds{"file", "directory", "share", "server",
                                                     "domain"};

}  // namespace

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::optional<int> errnoValue,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    reply_.clear();
    reply_ << "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"" << action
           << "\" Result=\"" << (ok ? "SUCCESS" : "FAILED") << "\"";
    if (errnoValue) {
        reply_ << " errno=\"" << std::to_string(*errnoValue) << "\"";
    }
    if (!hint.empty()) {
        reply_ << " hint=\"" << hint << "\"";
    }
    reply_ << ">";
    for (const CorvaneDetail& detail : details) {
        reply_.append(detail);
    }
    reply_ << "</Header></CorvaneMsg>";
    sendResponse(sock, reply_.pieces());
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, details, hint);
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok, int errnoValue) {
    sendResult(sock, action, ok, errnoValue, {}, "");
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, {}, hint);
}

std::string directory2id(int kind) {
    const bool known = kind >= 0 && static_cast<std::size_t>(kind) < entryKinds.size();
    return std::string(entryKinds[known ? static_cast<std::size_t>(kind) : 1]);
}

int id2directory(const std::string& text) {
    for (std::size_t kind = 0; kind < entryKinds.size(); ++kind) {
        if (entryKinds[kind] == text) {
            return static_cast<int>(kind);
        }
    }
    return 0;
}

}  // namespace corvane
