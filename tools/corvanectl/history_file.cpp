#include "corvanectl/history_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cstdlib>

#include "corvanectl/input.h"
#include "corvanectl/local_file.h"
#include "corvanectl/server_path.h"
#include "platform/file_desc.h"
#include "platform/io.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::size_t linesKept = 1000;
constexpr mode_t onlyMine = 0600;

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

}  // namespace

std::string historyPath() {
    if (std::getenv("CORVANECTL_HISTORY") != nullptr) {
        return variable("CORVANECTL_HISTORY");
    }
    if (const std::string state = variable("XDG_STATE_HOME"); startsWith(state, "/")) {
        return inDirectory(state, "corvanectl_history");
    }
    const std::string home = variable("HOME");
    return home.empty() ? "" : inDirectory(home, ".corvanectl_history");
}

std::vector<std::string> HistoryFile::load() const {
    std::vector<std::string> lines;
    try {
        lines = strExplode(path_.empty() ? "" : readLocalFile(path_), "\n");
        std::erase(lines, "");
        if (lines.size() > linesKept) {
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(linesKept));
            writeLocalFile(path_, strImplde(lines, "\n") + "\n", Existing::Replaced);
        }
    } catch (const Exception&) {
        static_cast<void>(0);
    }
    return lines;
}

void HistoryFile::append(const std::string& line) const {
    if (path_.empty()) {
        return;
    }
    const FileDesc file(::open(path_.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, onlyMine));
    if (file != -1) {
        writeAll(file, line + "\n");
    }
}

}  // namespace corvane::ctl
