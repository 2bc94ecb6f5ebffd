// The command server: turns the generic server's requests into commands and their XML replies. A
// command is one handler below, defined in the source of its group, and one row of commandTable.
#pragma once

#include <array>
#include <istream>
#include <log4cpp/Category.hh>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "commands/command_log.h"
#include "reply/corvane_detail.h"
#include "reply/reply_document.h"
#include "server/server.h"
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
    /// Runs the work of a command, its reply included. An Exception is passed to `report` and
    /// answered with FAILED and `hint`.
    template <typename Work, typename Report>
    void orFailed(int sock, const std::string& cmd, std::string_view hint, Work work,
                  Report report) {
        try {
            work();
        } catch (const Exception& e) {
            report(e);
            expectFreedMemory();  // what was too large for one has been freed
            sendResult(sock, cmd, false, hint);
        }
    }

    template <typename Find>
    void answerWithText(int sock, const std::string& cmd, const std::string& hint,
                        log4cpp::Category& category, Find find);
    template <typename Measure>
    void answerWithRectangle(int sock, const std::string& cmd, const CommandLog& log,
                             Measure measure);

    ReplyDocument reply_;
    /// Nothing in it matters but its memory, which cmdReadText() uses again.
    std::string text_;
};

/// What a command does to the machine. Before anything but Reads all pending log lines are written;
/// the request itself is among them at level DEBUG only.
enum class Effect { Reads, Changes, Launches };

struct Command {
    std::string_view name;
    void (CorvaneServer::*handler)(int sock, const std::string& cmd, std::istream& params);
    Effect effect;
    /// The parameter lines in order, separated by blanks; those in brackets may be left out.
    std::string_view parameters;
};

/// Every command but "shutdown", which the server itself handles.
inline constexpr std::array<Command, 22> commandTable{{
    {"write", &CorvaneServer::cmdWrite, Effect::Changes, "file data"},
    {"makeDir", &CorvaneServer::cmdMakeDir, Effect::Changes, "directory"},
    {"regQueryValue", &CorvaneServer::cmdRegQueryValue, Effect::Reads, "root path name"},
    {"delete", &CorvaneServer::cmdDelete, Effect::Changes, "path"},
    {"execute", &CorvaneServer::cmdExecute, Effect::Launches, "target"},
    {"copy", &CorvaneServer::cmdCopy, Effect::Changes,
     "source destination [recursive] [include] [exclude]"},
    {"rename", &CorvaneServer::cmdRename, Effect::Changes, "source destination"},
    {"log", &CorvaneServer::cmdLog, Effect::Reads, "category priority message"},
    {"readByte", &CorvaneServer::cmdReadByte, Effect::Reads, "file offset"},
    {"readText", &CorvaneServer::cmdReadText, Effect::Reads, "file"},
    {"listDir", &CorvaneServer::cmdListDir, Effect::Reads, "directory"},
    {"userDir", &CorvaneServer::cmdUserDir, Effect::Reads, "[which]"},
    {"currentDir", &CorvaneServer::cmdCurrentDir, Effect::Reads, ""},
    {"tempDir", &CorvaneServer::cmdTempDir, Effect::Reads, ""},
    {"regSetValue", &CorvaneServer::cmdRegSetValue, Effect::Reads, "root path name value"},
    {"getWndRect", &CorvaneServer::cmdGetWndRect, Effect::Launches, "[window]"},
    {"getScreenRect", &CorvaneServer::cmdGetScreenRect, Effect::Launches, ""},
    {"setWndPos", &CorvaneServer::cmdSetWndPos, Effect::Launches,
     "flags [x] [y] [width] [height] [window]"},
    {"bringToFront", &CorvaneServer::cmdBringToFront, Effect::Reads, "window"},
    {"listNet", &CorvaneServer::cmdListNet, Effect::Reads, "[group]"},
    {"userName", &CorvaneServer::cmdUserName, Effect::Reads, ""},
    {"clipboardGet", &CorvaneServer::cmdClipboardGet, Effect::Reads, ""},
}};

}  // namespace corvane
