// Commands that report facts about the user's environment, and the one that writes a line into the
// program's log.
#include <log4cpp/Category.hh>
#include <vector>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "log/external_log.h"
#include "reply/file_details.h"
#include "fileutil/file_info.h"
#include "fileutil/paths.h"

namespace corvane {
namespace {

using log4cpp::Category;

// Neither system has a way to ask for these without further libraries.
std::vector<FileInfo> scanNet(const std::string& /*group*/) {
    Category::getInstance("corvane.fileutil.scanNet");
    throw Exception("function netEnum() not implemented on this platform");
}

std::string clipboardGet() { throw Exception("clipboardGet() not supported on this platform"); }

}  // namespace

/// Answers with what `find` returns as the detail "value".
template <typename Find>
void CorvaneServer::answerWithText(int sock, const std::string& cmd, const std::string& hint,
                                   Category& category, Find find) {
    CommandLog(category, sock, cmd).debug();
    orFailed(
        sock, cmd, hint,
        [&] {
            const CorvaneDetail detail("value", find(), false);
            sendResult(sock, cmd, true, std::span(&detail, 1), hint);
        },
        [&category](const Exception& e) { category.error(e.message); });
}

void CorvaneServer::cmdUserDir(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.userDir");
    const std::string which = getline(params);
    answerWithText(sock, cmd, which.empty() ? cmd : cmd + " " + which, category,
                   which == "desktop" ? getUserDesktop : getUserDirectory);
}

void CorvaneServer::cmdUserName(int sock, const std::string& cmd, std::istream& /*params*/) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.userName");
    answerWithText(sock, cmd, cmd, category, getUserName);
}

void CorvaneServer::cmdCurrentDir(int sock, const std::string& cmd, std::istream& /*params*/) {
    static Category& category =
        Category::getInstance("corvane.server.process.client.cmd.currentDir");
    answerWithText(sock, cmd, cmd, category, getCurrentDirectory);
}

void CorvaneServer::cmdTempDir(int sock, const std::string& cmd, std::istream& /*params*/) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.tempDir");
    answerWithText(sock, cmd, cmd, category, getTempDirectory);
}

void CorvaneServer::cmdClipboardGet(int sock, const std::string& cmd, std::istream& /*params*/) {
    static Category& category =
        Category::getInstance("corvane.server.process.client.cmd.clipboardGet");
    answerWithText(sock, cmd, cmd, category, clipboardGet);
}

void CorvaneServer::cmdLog(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.log");
    const CommandLog log(category, sock, cmd);
    const std::string subCategory = getline(params);
    const std::string priority = getline(params);
    const std::string message = getline(params);
    orFailed(
        sock, cmd, "",
        [&] {
            writeExternalLine(subCategory, priority, message);
            sendResult(sock, cmd, true, "");
        },
        [&log](const Exception& e) { log.failure(e); });
}

void CorvaneServer::cmdListNet(int sock, const std::string& cmd, std::istream& params) {
    static Category& category = Category::getInstance("corvane.server.process.client.cmd.listNet");
    const CommandLog log(category, sock, cmd);
    const std::string group = getline(params);
    log.debug(": group '%s'", group.c_str());
    orFailed(
        sock, cmd, "", [&] { sendResult(sock, cmd, true, files2details(scanNet(group)), group); },
        [&](const Exception& e) {
            log.error(": group '%s' ERROR: '%s'", group.c_str(), e.what());
        });
}

}  // namespace corvane
