#include "app/logging.h"

#include <fcntl.h>
#include <unistd.h>

#include <log4cpp/BasicLayout.hh>
#include <log4cpp/Category.hh>
#include <log4cpp/PatternLayout.hh>
#include <log4cpp/SimpleLayout.hh>
#include <stdexcept>
#include <utility>

#include "app/settings.h"
#include "fileutil/paths.h"
#include "log/default_layout.h"
#include "log/log.h"
#include "log/log_file.h"
#include "platform/file_desc.h"
#include "platform/guarded_open.h"
#include "text/exception.h"
#include "text/strconv.h"
#include "text/strings.h"

namespace corvane {
namespace {

using log4cpp::Category;

constexpr mode_t logFileMode = 0777;

void attach(Category& root, const std::string& name, int fd, const std::string& pattern) {
    auto appender = std::make_unique<LogFile>(name, fd);
    appender->setLayout(getLayout(pattern).release());  // the appender owns its layout
    root.addAppender(appender.release());               // and the category its appenders
}

// A pipe that nobody reads is no place for a log; its opening would wait for a reader for ever.
// Writing does wait, so that no line is lost.
FileDesc openLog(const std::string& path) {
    OpenedFile file = openGuarded(AT_FDCWD, path, O_WRONLY | O_APPEND | O_CREAT, logFileMode);
    if (file.fd != -1) {
        ::fcntl(file.fd, F_SETFL, O_APPEND);
    }
    return std::move(file.fd);
}

FileDesc openLogFile(Category& log, const std::string& fileName) {
    const std::string path = strconv::utf82acs(getApplicationDirectory() + fileName);
    FileDesc fd = openLog(path);
    if (fd != -1) {
        return fd;
    }
    log.debug("Error creating log '%s'", path.c_str());
    const std::string homePath =
        strconv::utf82acs(correctDirectoryPath(getUserDirectory()) + "." + fileName);
    log.debug("Trying another log location '%s'", homePath.c_str());
    fd = openLog(homePath);
    if (fd == -1) {
        throw ConfigureFailure("Cannot create log file " + homePath);
    }
    return fd;
}

log4cpp::Priority::Value priorityOf(const std::string& name) {
    try {
        return log4cpp::Priority::getPriorityValue(name);
    } catch (const std::invalid_argument&) {
        throw ConfigureFailure("Invalid priority (" + name +
                               ") in logging configuration file for category: root");
    }
}

}  // namespace

void Log4cppConfigurator::configure(const std::string& name, const Properties& settings,
                                    bool console, int port) {
    Category& root = Category::getRoot();
    root.removeAllAppenders();
    Category& log = Category::getInstance("corvane.log");
    const LogSettings wanted(settings);
    if (console) {
        attach(root, "console", ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1),
               wanted.pattern);
    }
    LogLevel::set(priorityOf(wanted.priority));
    log.debug("acs is %d", strconv::getACS());
    attach(root, "file", openLogFile(log, format("%s%d.log", name.c_str(), port)).release(),
           wanted.pattern);
}

std::unique_ptr<log4cpp::Layout> getLayout(const std::string& spec) {
    if (spec == "basic") {
        return std::make_unique<log4cpp::BasicLayout>();
    }
    if (spec == "simple") {
        return std::make_unique<log4cpp::SimpleLayout>();
    }
    if (spec == defaultPattern) {
        return std::make_unique<DefaultLayout>();
    }
    auto layout = std::make_unique<log4cpp::PatternLayout>();
    layout->setConversionPattern(spec);
    return layout;
}

}  // namespace corvane
