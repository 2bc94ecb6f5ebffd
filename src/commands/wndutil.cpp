#include "commands/wndutil.h"

#include <log4cpp/Category.hh>
#include <vector>

#include "fileutil/paths.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::wndutil {
namespace {

std::string runTool(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), getApplicationDirectory() + PROG_INFO);
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    return execute(argv[0], argv.data());
}

}  // namespace

std::string makeCmd(const char* path, char* const* argv) {
    std::string command = path;
    for (char* const* argument = argv + 1; *argument != nullptr; ++argument) {
        command += std::string(" \"") + *argument + "\"";
    }
    return command;
}

int nextInt(const char*& cursor) {
    const std::string rest = cursor;
    const std::size_t comma = rest.find(',');
    if (comma == std::string::npos) {
        throw Exception(format("error getting next param [%s]", cursor));
    }
    cursor += comma + 1;
    return static_cast<int>(toLong(cursor, -1));
}

void getWndRect(const char* name, int& x, int& y, int& width, int& height) {
    const std::string output = runTool({"-g", "-n", name});
    const char* cursor = output.c_str();
    x = static_cast<int>(toLong(cursor, -1));
    y = nextInt(cursor);
    width = nextInt(cursor);
    height = nextInt(cursor);
}

void getScreenRect(int& x, int& y, int& width, int& height) {
    const std::string output = runTool({"-a"});
    const char* cursor = output.c_str();
    x = 0;
    y = 0;
    width = static_cast<int>(toLong(cursor, -1));
    height = nextInt(cursor);
}

void setWndPos(const char* name, int flags, int x, int y, int width, int height) {
    std::vector<std::string> arguments{"-n", name};
    if ((flags & SET_POSITION) != 0) {
        arguments.insert(arguments.end(), {"-p", format("%d,%d", x, y)});
    }
    if ((flags & SET_SIZE) != 0) {
        arguments.insert(arguments.end(), {"-s", format("%d,%d", width, height)});
    }
    runTool(std::move(arguments));
}

void bringToFront(const char* /*name*/) {
    log4cpp::Category::getInstance("corvane.wndutil.bringToFront");
    throw Exception("Not implemented");
}

}  // namespace corvane::wndutil
