// The command server: turns the generic server's requests into commands and their XML replies. A
// command is one handler below, defined in the source of its group, and one row of commandTable.
#pragma once

#include <array>
#include <istream>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "commands/command_log.h"
#include "reply/corvane_detail.h"
#include "reply/reply_document.h"
#include "server/server.h"
#include "server/socket_exception.h"
#include "text/exception.h"

namespace corvane {

class CorvaneServer : public Server {
  public:
    /// Calls the handler of `cmd`; an unknown name gets a FAILED reply. Exceptions of a handler
    /// pass through and cost the client its connection.
    void processClientCommand(int sock, const std::string& cmd, std::istream& params) override;
    /// Sends a FAILED reply.
    void sendFatalError(int sock, const std::string& cmd) override;

    /// Sends a reply. Nothing in it is escaped here: a value that may hold markup must come
    /// escaped. The errno attribute is written when there is a value, the hint when it is not
    /// empty. Throws what Server::sendResponse() throws.
    void sendResult(int sock, const std::string& action, bool ok, std::optional<int> errnoValue,
                    std::span<const CorvaneDetail> details, std::string_view hint);
    void sendResult(int sock, const std::string& action, bool ok,
                    std::span<const CorvaneDetail> details, std::string_view hint);
    void sendResult(int sock, const std::string& action, bool ok, int errnoValue);
    void sendResult(int sock, const std::string& action, bool ok, std::string_view hint);

    // Handlers. Each reads its parameters line by line and answers exactly once, with `cmd` as the
    // action; what goes wrong is logged and answered with FAILED.
    void cmdWrite(int sock, const std::string& cmd, std::istream& params);
    void cmdMakeDir(int sock, const std::string& cmd, std::istream& params);
    void cmdRegQueryValue(int sock, const std::string& cmd, std::istream& params);
    void cmdDelete(int sock, const std::string& cmd, std::istream& params);
    void cmdExecute(int sock, const std::string& cmd, std::istream& params);
    void cmdCopy(int sock, const std::string& cmd, std::istream& params);
    void cmdRename(int sock, const std::string& cmd, std::istream& params);
    void cmdLog(int sock, const std::string& cmd, std::istream& params);
    void cmdReadByte(int sock, const std::string& cmd, std::istream& params);
    void cmdReadText(int sock, const std::string& cmd, std::istream& params);
    void cmdListDir(int sock, const std::string& cmd, std::istream& params);
    void cmdUserDir(int sock, const std::string& cmd, std::istream& params);
    void cmdCurrentDir(int sock, const std::string& cmd, std::istream& params);
    void cmdTempDir(int sock, const std::string& cmd, std::istream& params);
    void cmdRegSetValue(int sock, const std::string& cmd, std::istream& params);
    void cmdGetWndRect(int sock, const std::string& cmd, std::istream& params);
    void cmdGetScreenRect(int sock, const std::string& cmd, std::istream& params);
    void cmdSetWndPos(int sock, const std::string& cmd, std::istream& params);
    void cmdBringToFront(int sock, const std::string& cmd, std::istream& params);
    void cmdListNet(int sock, const std::string& cmd, std::istream& params);
    void cmdUserName(int sock, const std::string& cmd, std::istream& params);
    void cmdClipboardGet(int sock, const std::string& cmd, std::istream& params);

  private:
    /// The log of one command of one client; `cmd` must outlive it.
    CommandLog logOf(int sock, const std::string& cmd) { return {addressOf(sock), cmd}; }

    /// Runs the work of a command, its reply included. An Exception is passed to `report` and
    /// answered with FAILED and `hint`; a SocketException passes, since a lost connection cannot be
    /// answered.
    template <typename Work, typename Report>
    void orFailed(int sock, const std::string& cmd, std::string_view hint, Work work,
                  Report report) {
        try {
            work();
        } catch (const SocketException&) {
            throw;
        } catch (const Exception& e) {
            report(e);
            expectFreedMemory();  // what was too large for one has been freed
            sendResult(sock, cmd, false, hint);
        }
    }
    /// The same as most commands fail: with the common line in the log and without a hint.
    template <typename Work>
    void orFailed(int sock, const std::string& cmd, Work work) {
        orFailed(sock, cmd, "", work, [&](const Exception& e) { logOf(sock, cmd).failure(e); });
    }

    /// Sends a reply; when the connection is lost meanwhile, `report` is told before anybody else.
    template <typename Send, typename Report>
    static void reportingLoss(Send send, Report report) {
        try {
            send();
        } catch (const SocketException& e) {
            report(e);
            throw;
        }
    }

    template <typename Find>
    void answerWithText(int sock, const std::string& cmd, const std::string& hint, Find find);
    template <typename Measure>
    void answerWithRectangle(int sock, const std::string& cmd, Measure measure);

    ReplyDocument reply_;
    /// Nothing in it matters but its memory, which cmdReadText() uses again.
    std::string text_;
};

/// How much a command is about to do. Before Heavy work, which others can observe before the reply
/// or which may last, all pending log lines are written (the request itself is among them at level
/// DEBUG only); and the memory that it leaves behind is given back.
enum class Work { Light, Heavy };

struct Command {
    std::string_view name;
    void (CorvaneServer::*handler)(int sock, const std::string& cmd, std::istream& params);
    Work work;
    /// The last part of its log category.
    std::string_view category = name;
};

/// Every command but "shutdown", which the server itself handles. The parameters of each are in
/// command_syntax.h.
inline constexpr auto commandTable = std::to_array<Command>({
    {"write", &CorvaneServer::cmdWrite, Work::Heavy},
    {"makeDir", &CorvaneServer::cmdMakeDir, Work::Heavy},
    {"regQueryValue", &CorvaneServer::cmdRegQueryValue, Work::Heavy},
    {"delete", &CorvaneServer::cmdDelete, Work::Heavy},
    {"execute", &CorvaneServer::cmdExecute, Work::Heavy},
    {"copy", &CorvaneServer::cmdCopy, Work::Heavy},
    {"rename", &CorvaneServer::cmdRename, Work::Heavy},
    {"log", &CorvaneServer::cmdLog, Work::Light},
    {"readByte", &CorvaneServer::cmdReadByte, Work::Light},
    {"readText", &CorvaneServer::cmdReadText, Work::Light},
    {"listDir", &CorvaneServer::cmdListDir, Work::Light},
    {"userDir", &CorvaneServer::cmdUserDir, Work::Light},
    {"currentDir", &CorvaneServer::cmdCurrentDir, Work::Light},
    {"tempDir", &CorvaneServer::cmdTempDir, Work::Light},
    {"regSetValue", &CorvaneServer::cmdRegSetValue, Work::Light},
    {"getWndRect", &CorvaneServer::cmdGetWndRect, Work::Heavy},
    {"getScreenRect", &CorvaneServer::cmdGetScreenRect, Work::Heavy, "getScreenSize"},
    {"setWndPos", &CorvaneServer::cmdSetWndPos, Work::Heavy},
    {"bringToFront", &CorvaneServer::cmdBringToFront, Work::Light},
    {"listNet", &CorvaneServer::cmdListNet, Work::Light},
    {"userName", &CorvaneServer::cmdUserName, Work::Light},
    {"clipboardGet", &CorvaneServer::cmdClipboardGet, Work::Light},
});

/// The row of a command; null for a name that is none. The comparison is exact.
const Command* findCommand(std::string_view name);

}  // namespace corvane
