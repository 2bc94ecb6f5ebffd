// The half of paths.h that asks the system.
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <log4cpp/Category.hh>
#include <optional>
#include <utility>

#include "fileutil/paths.h"
#include "platform/system.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t currentDirectorySize = 2048;

std::optional<std::string> userName;

std::string fromSystem(const char* text) {
    return text == nullptr ? std::string() : strconv::acs2utf8(std::string(text));
}

}  // namespace

int ARGC = 0;
char** ARGV = nullptr;
std::string startupDirectory;

mode_t getFileMode(const std::string& path) {
    struct stat info {};
    const bool known = ::stat(strconv::utf82acs(unslashPath(path)).c_str(), &info) == 0;
    return known ? info.st_mode : 0;
}

bool isDirectory(const std::string& path) { return S_ISDIR(getFileMode(path)); }

std::string getCurrentDirectory() {
    std::string path = platform::currentDirectory(currentDirectorySize);
    return correctDirectoryPath(strconv::acs2utf8(std::move(path)));
}

std::string getStartupDirectory() { return startupDirectory; }

void initStartupDirectory() { startupDirectory = getCurrentDirectory(); }

int changeCurrentDirectory(const char* path) { return ::chdir(path) == 0 ? 0 : errno; }

// The directory that tempnam(3) would choose for a file; no name is made, and so nothing can race.
std::string getTempDirectory() { return strconv::acs2utf8(platform::temporaryDirectory()); }

std::string getUserDirectory() {
    for (const char* name : {"HOME", "USERPROFILE", "TEMP", "TMP"}) {
        if (const char* value = std::getenv(name); value != nullptr) {
            return value;
        }
    }
    return "";
}

std::string getUserName() {
    log4cpp::Category::getInstance("corvane.fileutil.getUserName");
    return userName ? *userName : fromSystem(::getlogin());
}

void rememberUserName() { userName = getUserName(); }

std::string getUserDesktop() {
    static log4cpp::Category& log =
        log4cpp::Category::getInstance("corvane.fileutil.getUserDesktop");
    const std::string desktop = correctDirectoryPath(getUserDirectory()) + "Desktop";
    if (!isDirectory(desktop)) {
        log.debug("path '%s' is not directory", desktop.c_str());
        return "";
    }
    return unslashPath(desktop);
}

std::string getApplicationPath() {
    if (ARGC < 1 || ARGV == nullptr || ARGV[0] == nullptr) {
        throw IOException(format("cannot find application path. last path '%s'", ""), ENOENT);
    }
    std::string program = ARGV[0];
    if (startsWith(program, "/")) {
        return program;
    }
    std::string path = startupDirectory + program;
    if (::access(strconv::utf82acs(path).c_str(), F_OK) != 0) {
        const int error = errno;
        throw IOException(format("cannot find application path. last path '%s'", path.c_str()),
                          error);
    }
    return path;
}

std::string getApplicationDirectory() { return getDirectory(getApplicationPath()); }

std::uint32_t currentTimeMillis() {
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return static_cast<std::uint32_t>(now.tv_sec) * 1000U +
           static_cast<std::uint32_t>(now.tv_usec) / 1000U;
}

}  // namespace corvane
