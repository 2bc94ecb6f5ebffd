// Running the window tool: what its status and its outputs mean.
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <log4cpp/Category.hh>

#include "commands/wndutil.h"
#include "platform/child.h"
#include "platform/descriptor_limit.h"
#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::wndutil {
namespace {

int toolTimeout = 0;

log4cpp::Category& executeLog() {
    static log4cpp::Category& log = log4cpp::Category::getInstance("corvane.wndutil.execute");
    return log;
}

[[noreturn]] void becomeTool(const char* path, char* const* argv) {
    resetSignals();
    restoreDescriptorLimit();
    ::execv(path, argv);
    const int error = errno;
    std::array<char, 64> message{};
    const int length = std::snprintf(message.data(), message.size(), "execv() fail err %d", error);
    [[maybe_unused]] const ssize_t written =
        ::write(STDERR_FILENO, message.data(), static_cast<std::size_t>(length));
    ::_exit(error);
}

int endOf(Child& tool, const Deadline& deadline) {
    if (!tool.waitFor(deadline)) {
        tool.kill();
    }
    if (tool.waitError() != 0) {
        executeLog().error("parent: wait fail %d", tool.waitError());
    }
    return *tool.status();
}

std::string result(Child& tool, const char* path) {
    const Deadline deadline = deadlineAfter(toolTimeout);
    const int status = endOf(tool, deadline);
    if ((status & 0x7F) != 0) {
        throw Exception(format("Program has exited in unusual way (%d) with message: <%s> [%s])",
                               status, tool.wholeErrors(deadline).c_str(), path));
    }
    const int code = (status >> 8) & 0xFF;
    if (code != 0) {
        throw IOException(
            format("Program error: <%s> [%s])", tool.wholeErrors(deadline).c_str(), path), code);
    }
    const std::string& text = tool.wholeOutput(deadline);
    executeLog().debug("Output <%s> [%s]", text.c_str(), path);
    return text;
}

}  // namespace

void setToolTimeout(int seconds) { toolTimeout = seconds; }

std::string readstring(int fd, const Deadline& deadline) {
    std::string text;
    while (!readAvailable(fd, text)) {
        if (interrupted() || !waitForSocket(fd, Direction::Read, deadline)) {
            break;
        }
    }
    return text;
}

std::string execute(const char* path, char* const* argv) {
    if (executeLog().isDebugEnabled()) {
        executeLog().debug("execute: %s", makeCmd(path, argv).c_str());
    }
    Child tool(Child::Capture::OutputAndErrors, Child::Group::Own,
               [path, argv] { becomeTool(path, argv); });
    return result(tool, path);
}

}  // namespace corvane::wndutil
