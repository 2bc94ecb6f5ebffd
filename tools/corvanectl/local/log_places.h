// Where the log of a server on this machine may be.
#pragma once

#include <string>
#include <vector>

namespace corvane::ctl {

struct LogQuery {
    /// The file that the user has named; empty for none.
    std::string chosen;
    int port;
    /// Of corvanectl itself, with a "/" at its end.
    std::string ownDirectory;
    /// Empty for none.
    std::string home;
};

/// A query with this program's directory, and the home directory as the server looks it up.
LogQuery queryForLog(const std::string& chosen, int port);

/// Where a server that is configured with this port writes its log, if its executable is beside
/// corvanectl or where an installation has it. Whether the files are there is not asked.
std::vector<std::string> likelyLogs(const LogQuery& query);

/// The log files that the program has open that listens on the port; none when it cannot be looked
/// into.
std::vector<std::string> openLogs(int port);

/// All of both that are there, what is open first, none of them twice.
std::vector<std::string> foundLogs(const LogQuery& query);

/// The directories in which the server's executable may be, in the same order; each ends with "/".
std::vector<std::string> serverDirectories(const std::string& ownDirectory);

}  // namespace corvane::ctl
