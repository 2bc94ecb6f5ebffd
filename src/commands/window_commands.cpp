// The commands about windows and the screen.
#include <array>
#include <climits>

#include "commands/command_log.h"
#include "commands/corvane_server.h"
#include "commands/wndutil.h"
#include "text/strings.h"

namespace corvane {
namespace {

// The number that a line begins with, or -1 when there is none or an int cannot hold it.
int numberOf(const std::string& line) {
    constexpr int none = -1;
    const long number = toLong(line, none);
    return number < INT_MIN || number > INT_MAX ? none : static_cast<int>(number);
}

// What a setWndPos request asks for. Numbers that the flags leave out are -1.
struct Placement {
    int flags = 0;
    int x = -1;
    int y = -1;
    int width = -1;
    int height = -1;
    std::string window;
};

Placement readPlacement(std::istream& params) {
    Placement wanted;
    const std::string line = Server::getline(params);
    const long flags = toLong(line, 0);
    if (flags == 0) {
        throw Exception(format("Invalid flag '%s'", line.c_str()));
    }
    wanted.flags = static_cast<int>(flags);  // bits beyond those of an int ask for nothing
    if ((wanted.flags & wndutil::SET_POSITION) != 0) {
        wanted.x = numberOf(Server::getline(params));
        wanted.y = numberOf(Server::getline(params));
    }
    if ((wanted.flags & wndutil::SET_SIZE) != 0) {
        wanted.width = numberOf(Server::getline(params));
        wanted.height = numberOf(Server::getline(params));
    }
    wanted.window = Server::getline(params);
    return wanted;
}

void place(const char* window, const Placement& wanted) {
    wndutil::setWndPos(window, wanted.flags, wanted.x, wanted.y, wanted.width, wanted.height);
}

void placePlayer(const Placement& wanted) {
    try {
        place(wndutil::PLAYER_TITLE, wanted);
    } catch (const Exception&) {
        place(wndutil::OTHER_PLAYER_TITLE, wanted);
    }
}

}  // namespace

// Answers with the four numbers that `measure` finds.
template <typename Measure>
void CorvaneServer::answerWithRectangle(int sock, const std::string& cmd, Measure measure) {
    orFailed(sock, cmd, [&] {
        int x = 0;
        int y = 0;
        int width = 0;
        int height = 0;
        measure(x, y, width, height);
        const std::array<CorvaneDetail, 4> details{
            CorvaneDetail("x", toString(x), false), CorvaneDetail("y", toString(y), false),
            CorvaneDetail("width", toString(width), false),
            CorvaneDetail("height", toString(height), false)};
        sendResult(sock, cmd, true, details, "");
    });
}

void CorvaneServer::cmdGetWndRect(int sock, const std::string& cmd, std::istream& params) {
    std::string name = getline(params);
    if (name.empty()) {
        name = wndutil::PLAYER_TITLE;
    }
    logOf(sock, cmd).debug(": window name '%s'", name.c_str());
    answerWithRectangle(sock, cmd, [&name](int& x, int& y, int& width, int& height) {
        wndutil::getWndRect(name.c_str(), x, y, width, height);
    });
}

void CorvaneServer::cmdGetScreenRect(int sock, const std::string& cmd, std::istream& /*params*/) {
    logOf(sock, cmd).debug();
    answerWithRectangle(sock, cmd, wndutil::getScreenRect);
}

void CorvaneServer::cmdSetWndPos(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    orFailed(sock, cmd, [&] {
        const Placement wanted = readPlacement(params);
        log.debug(": window name '%s' flag %#x", wanted.window.c_str(),
                  static_cast<unsigned>(wanted.flags));
        if (wanted.window.empty()) {
            placePlayer(wanted);
        } else {
            place(wanted.window.c_str(), wanted);
        }
        sendResult(sock, cmd, true, "");
    });
}

void CorvaneServer::cmdBringToFront(int sock, const std::string& cmd, std::istream& params) {
    const CommandLog log = logOf(sock, cmd);
    orFailed(sock, cmd, [&] {
        const std::string name = getline(params);
        if (name.empty()) {
            throw Exception("Window name is empty");
        }
        log.debug(": window name '%s'", name.c_str());
        wndutil::bringToFront(name.c_str());
        sendResult(sock, cmd, true, "");
    });
}

}  // namespace corvane
