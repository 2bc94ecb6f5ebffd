#include "corvanectl/local/doctor.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "corvanectl/local/check_machine.h"
#include "platform/file_desc.h"
#include "support/scratch_directory.h"
#include "text/strings.h"

namespace corvane::ctl::local {
namespace {

Findings good(const Installation& /*installation*/) { return {fine("good")}; }
Findings nothing(const Installation& /*installation*/) { return {}; }
Findings bad(const Installation& /*installation*/) { return {wrong("bad\x1b", "mend it")}; }

std::string reported(std::initializer_list<Check> checks, bool isWell) {
    std::ostringstream out;
    EXPECT_EQ(report({}, {checks.begin(), checks.size()}, out), isWell);
    return out.str();
}

TEST(DoctorReport, HasALineForEachThing) {
    EXPECT_EQ(reported({{"a", good}, {"b", nothing}}, true),
              "ok     a: good\nok     b: nothing wrong\n");
    EXPECT_EQ(reported({{"a", bad}, {"b", good}}, false),
              "WRONG  a: bad\\x1b -> mend it\nok     b: good\n");
}

Installation at(const test::ScratchDirectory& scratch, int port) {
    Installation installation;
    installation.query = {"", port, "/nowhere/", scratch.path()};
    installation.directory = scratch.path();
    return installation;
}

TEST(DoctorWindowTool, SaysWhatTheToolSays) {
    const test::ScratchDirectory scratch;
    const Installation installation = at(scratch, 1);
    EXPECT_TRUE(checks::windowTool(installation).front().isWrong);
    scratch.program("cvnwinfo", "#!/bin/sh\necho 'no X display' >&2\nexit 1\n");
    EXPECT_EQ(checks::windowTool(installation).front().text,
              scratch / "cvnwinfo" + " says: no X display");
    EXPECT_NE(checks::windowTool(installation).front().mend.find("session"), std::string::npos);
    scratch.program("cvnwinfo", "#!/bin/sh\necho 800 600\n");
    EXPECT_FALSE(checks::windowTool(installation).front().isWrong);
}

TEST(DoctorWindowTool, NeedsItsLibrariesMoreThanAScreen) {
    const test::ScratchDirectory scratch;
    for (const char* complaint : {"cvnwinfo: error while loading shared libraries: libx.so: gone",
                                  "dyld: Library not loaded: /usr/local/lib/libx.dylib"}) {
        scratch.program("cvnwinfo", format("#!/bin/sh\necho '%s' >&2\nexit 127\n", complaint));
        EXPECT_EQ(checks::windowTool(at(scratch, 1)).front().mend,
                  "install what it needs: the whole package, with its dependencies");
    }
}

TEST(DoctorWindowTool, IsNotRunForTheServerOfAnotherUser) {
    const test::ScratchDirectory scratch;
    Installation installation = at(scratch, 1);
    installation.isTrusted = false;
    scratch.program("cvnwinfo", "#!/bin/sh\ntouch \"$0.ran\"\n");
    EXPECT_FALSE(checks::windowTool(installation).front().isWrong);
    EXPECT_FALSE(std::filesystem::exists(scratch / "cvnwinfo.ran"));
}

TEST(DoctorLog, NamesItAndTheRoomForIt) {
    const test::ScratchDirectory scratch;
    const Finding finding = checks::log(at(scratch, 1)).front();
    EXPECT_TRUE(startsWith(finding.text, "none yet, it would be in " + scratch.path()));
    scratch.file(".cv1.log");
    EXPECT_TRUE(startsWith(checks::log(at(scratch, 1)).front().text, scratch / ".cv1.log"));
    Installation nowhere = at(scratch, 2);
    nowhere.directory = nowhere.query.home = "/nonexistent/";
    EXPECT_TRUE(checks::log(nowhere).front().isWrong);
}

TEST(DoctorStart, SeesTwoAtOnce) {
    const test::ScratchDirectory scratch;
    Installation installation = at(scratch, 1);
    installation.query.home = scratch / "home";
    EXPECT_FALSE(checks::starts(installation).front().isWrong);
    scratch.file("home/.config/autostart/corvane.desktop");
    EXPECT_FALSE(checks::starts(installation).front().isWrong);
    scratch.file("home/.config/systemd/user/graphical-session.target.wants/corvane.service");
    const Finding finding = checks::starts(installation).front();
    EXPECT_TRUE(finding.isWrong);
    EXPECT_NE(finding.text.find("corvane.desktop"), std::string::npos);
}

struct Listener {
    Listener() {
        place.sin_family = AF_INET;
        place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::bind(sock, reinterpret_cast<sockaddr*>(&place), sizeof place);
        ::listen(sock, 1);
        socklen_t size = sizeof place;
        ::getsockname(sock, reinterpret_cast<sockaddr*>(&place), &size);
    }
    int port() const { return ntohs(place.sin_port); }
    static int portOf(int sock) {
        sockaddr_in own{};
        socklen_t size = sizeof own;
        ::getsockname(sock, reinterpret_cast<sockaddr*>(&own), &size);
        return ntohs(own.sin_port);
    }
    sockaddr_in place{};
    FileDesc sock{::socket(AF_INET, SOCK_STREAM, 0)};
};

// Others may have connections from the same port, or have had.
bool mentions(const Findings& findings, const std::string& text) {
    return std::any_of(findings.begin(), findings.end(), [&text](const Finding& each) {
        return each.text.find(text) != std::string::npos;
    });
}

TEST(DoctorPort, NamesAnotherProgramThatListens) {
    const test::ScratchDirectory scratch;
    const Listener other;
    Installation installation = at(scratch, other.port());
    installation.configuration = parseConfiguration("c", format("PORT=%d", other.port()));
    installation.state = serverState(installation.query);
    EXPECT_TRUE(mentions(checks::port(installation), "corvanectl_test) has port"));
    EXPECT_TRUE(mentions(checks::port(installation), "it listens there"));
    EXPECT_TRUE(checks::server(installation).front().isWrong);
}

TEST(DoctorPort, NamesAConnectionThatGoesOutFromIt) {
    const test::ScratchDirectory scratch;
    const Listener far;
    const FileDesc client(::socket(AF_INET, SOCK_STREAM, 0));
    ASSERT_EQ(::connect(client, reinterpret_cast<const sockaddr*>(&far.place), sizeof far.place),
              0);
    const int port = Listener::portOf(client);
    Installation installation = at(scratch, port);
    installation.configuration = parseConfiguration("c", format("PORT=%d", port));
    installation.state = serverState(installation.query);
    EXPECT_TRUE(mentions(checks::port(installation),
                         format("its connection to 127.0.0.1:%d goes out", far.port())));
}

TEST(DoctorPort, IsTheOneOfTheConfiguration) {
    const test::ScratchDirectory scratch;
    Installation installation = at(scratch, 54321);
    installation.configuration = parseConfiguration("c", "PORT=5000");
    EXPECT_EQ(checks::port(installation).front().mend, "ask with --port 5000");
    installation.configuration = parseConfiguration("c", "");
    EXPECT_TRUE(checks::port(installation).empty());
}

}  // namespace
}  // namespace corvane::ctl::local
