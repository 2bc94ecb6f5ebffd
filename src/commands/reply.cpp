// The reply document: one line of XML, whose exact bytes applications depend on.
#include "commands/corvane_server.h"

namespace corvane {

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::optional<int> errnoValue,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    const std::string_view result = ok ? "SUCCESS" : "FAILED";
    reply_.clear();
    reply_.write("<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"", action,
                 "\" Result=\"", result, "\"");
    if (errnoValue) {
        reply_.write(" errno=\"", std::to_string(*errnoValue), "\"");
    }
    if (!hint.empty()) {
        reply_.write(" hint=\"", hint, "\"");
    }
    reply_.write(">");
    for (const CorvaneDetail& detail : details) {
        reply_.append(detail);
    }
    reply_.write("</Header></CorvaneMsg>");
    sendTerminated(sock, reply_.finish());
    reply_.clear();
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

}  // namespace corvane
