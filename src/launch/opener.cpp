#include "launch/opener.h"

#include <cerrno>
#include <log4cpp/Category.hh>

#include "fileutil/paths.h"
#include "platform/opener.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

using Result = platform::Opening::Result;

// Where the program's own tools lie; where that cannot be told, they are searched in PATH.
std::string ownDirectory() {
    try {
        return getApplicationDirectory();
    } catch (const IOException&) {
        return "";
    }
}

}  // namespace

void openAddress(const std::string& target) {
    const auto [result, status] = platform::openAddress(target, ownDirectory());
    switch (result) {
        case Result::Opened:
            return;
        case Result::NotAnAddress:
            throw Exception(format("Cannot create CFURLRef for '%s'", target.c_str()));
        case Result::NoOpener:
            throw IOException(
                format("LSOpenCFURLRef error for file '%s': no program to open it with; "
                       "install xdg-open (package xdg-utils) or gio",
                       target.c_str()),
                ENOENT);
        case Result::Failed:
            throw IOException(format("LSOpenCFURLRef error for file '%s'", target.c_str()), status);
    }
}

void openDocument(const std::string& path) {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.platform.open");
    if (!platform::openDocument(path, ownDirectory())) {
        log.warn("no program to open '%s' with; install xdg-open (package xdg-utils) or gio",
                 path.c_str());
    }
}

}  // namespace corvane
