// The lines that were typed at the prompt, kept for the next time in a file that nobody else reads.
#pragma once

#include <string>
#include <vector>

namespace corvane::ctl {

/// $CORVANECTL_HISTORY, else corvanectl_history in $XDG_STATE_HOME, else .corvanectl_history in the
/// home directory. Empty when there is none, as when CORVANECTL_HISTORY is set and empty.
std::string historyPath();

/// Failures are passed over: the prompt works without its history.
class HistoryFile {
  public:
    /// An empty path stands for no file.
    explicit HistoryFile(std::string path) : path_(std::move(path)) {}

    /// The last lines, at most 1000, the newest last.
    std::vector<std::string> load() const;

    void append(const std::string& line) const;

  private:
    std::string path_;
};

}  // namespace corvane::ctl
