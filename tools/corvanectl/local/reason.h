// The server's own reason for a FAILED reply, out of its log.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "corvanectl/invocation.h"
#include "corvanectl/local/log_file.h"
#include "corvanectl/local/log_places.h"

namespace corvane::ctl {

/// What the last line says that gives the reason for the failure of the client's command. A line
/// without the client's name counts, for lack of another, where its category is the command's.
std::optional<std::string> reasonIn(std::string_view lines, const std::string& client,
                                    const std::string& command);

/// The reason with the system's words for its error number:
/// "opendir '/x/' error 2 (No such file or directory)".
std::string inWords(const std::string& reason);

/// To be made before the request is sent: it remembers where the logs end then, so that no older
/// line is taken for the reason.
class FailureLog {
  public:
    explicit FailureLog(LogQuery query);

    /// The reason, or where it may be found; for a terminal (visible()). `client` is this
    /// program's end of the connection, as the log has it.
    std::string explain(const std::string& client, const std::string& command) const;

  private:
    LogQuery query_;
    std::vector<std::pair<std::string, std::optional<LogPosition>>> ends_;
};

/// As explain() of the log; of a server on another machine, whose log is out of reach unless the
/// invocation names one, where that is.
std::string reasonFor(const Invocation& invocation, const FailureLog& log,
                      const std::string& client, bool isFromThisMachine,
                      const std::string& command);

}  // namespace corvane::ctl
