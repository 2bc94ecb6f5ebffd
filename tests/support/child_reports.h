// Reports of programs that the code under test starts and does not wait for: they come through a
// named pipe, so that a test waits for exactly as long as it takes. Stand-ins for other programs
// are links to the program child_report, or shell scripts that end with "echo end > $CHILD_REPORT".
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/file_desc.h"
#include "support/environment.h"
#include "support/scratch_directory.h"

namespace corvane::test {

class ChildReports {
  public:
    explicit ChildReports(const ScratchDirectory& scratch)
        : path_(makePipe(scratch)), pipe_(::open(path_.c_str(), O_RDWR | O_CLOEXEC)) {}

    /// The lines of the next report, without "end".
    std::vector<std::string> next() {
        std::vector<std::string> lines;
        std::string line;
        char c = 0;
        while (::read(pipe_, &c, 1) == 1) {
            if (c != '\n') {
                line += c;
            } else if (line == "end") {
                return lines;
            } else {
                lines.push_back(std::exchange(line, ""));
            }
        }
        throw std::runtime_error("a report without an end");
    }

    /// Those lines that begin with `word` and a blank or tab, without it.
    static std::vector<std::string> valuesOf(const std::vector<std::string>& lines,
                                             const std::string& word) {
        std::vector<std::string> values;
        for (const std::string& line : lines) {
            if (line.rfind(word, 0) == 0 && line.size() > word.size()) {
                values.push_back(line.substr(word.size() + 1));
            }
        }
        return values;
    }

    std::vector<std::string> nextArguments() { return valuesOf(next(), "argument"); }

  private:
    static std::string makePipe(const ScratchDirectory& scratch) {
        std::string path = scratch / "child-report";
        if (::mkfifo(path.c_str(), 0600) != 0) {
            throw std::runtime_error("cannot create " + path);
        }
        return path;
    }

    std::string path_;
    FileDesc pipe_;
    EnvironmentVariable variable_{"CHILD_REPORT", path_};
};

}  // namespace corvane::test
