// Commands that report facts about the user's environment, and the one that writes a line into the
// program's log.
#include <log4cpp/Category.hh>
#include <vector>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "fileutil/file_info.h"
#include "fileutil/paths.h"
#include "log/external_log.h"
#include "reply/file_details.h"

namespace corvane {
namespace {

// Neither system has a way to ask for these without further libraries.
std::vector<FileInfo> scanNet(const std::string& /*group*/) {
    log4cpp::Category::getInstance("corvane.fileutil.scanNet");
    throw Exception("function netEnum() not implemented on this platform");
}

std::string clipboardGet() { throw Exception("clipboardGet() not supported on this platform"); }

}  // namespace

/// Answers with what `find` returns as the detail "value".
template <typename Find>
void CorvaneServer::answerWithText(int sock, const std::string& cmd, const std::string& hint,
                                   Find find) {
    const CommandLog log = logOf(sock, cmd);
    log.debug();
    orFailed(
        sock, cmd, hint,
        [&] {
            const CorvaneDetail detail("value", find(), false);
            sendResult(sock, cmd, true, std::span(&detail, 1), hint);
        },
        [&log](const Exception& e) { log.reason(e); });
}

void CorvaneServer::cmdUserDir(int sock, const std::string& cmd, std::istream& params) {
    const std::string which = getline(params);
    answerWithText(sock, cmd, which.empty() ? cmd : cmd + " " + which,
                   which == "desktop" ? getUserDesktop : getUserDirectory);
}

void CorvaneServer::cmdUserName(int sock, const std::string& cmd, std::istream& /*params*/) {
    answerWithText(sock, cmd, cmd, getUserName);
}

void CorvaneServer::cmdCurrentDir(int sock, const std::string& cmd, std::istream& /*params*/) {
    answerWithText(sock, cmd, cmd, getCurrentDirectory);
}

void CorvaneServer::cmdTempDir(int sock, const std::string& cmd, std::istream& /*params*/) {
    answerWithText(sock, cmd, cmd, getTempDirectory);
}

void CorvaneServer::cmdClipboardGet(int sock, const std::string& cmd, std::istream& /*params*/) {
    answerWithText(sock, cmd, cmd, clipboardGet);
}

void CorvaneServer::cmdLog(int sock, const std::string& cmd, std::istream& params) {
    const std::string subCategory = getline(params);
    const std::string priority = getline(params);
    const std::string message = getline(params);
    orFailed(sock, cmd, [&] {
        writeExternalLine(subCategory, priority, message);
        sendResult(sock, cmd, true, "");
    });
}

void CorvaneServer::cmdListNet(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    const std::string group = getline(params);
    log.debug(": group '%s'", group.c_str());
    orFailed(
        sock, cmd, "", [&] { sendResult(sock, cmd, true, files2details(scanNet(group)), group); },
        [&](const Exception& e) {
            log.error(": group '%s' ERROR: '%s'", group.c_str(), e.what());
        });
}

}  // namespace corvane
