// The opener with stand-ins for the desktop's programs, found through PATH.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "launch/opener.h"
#include "platform/waiting.h"
#include "support/child_reports.h"
#include "support/environment.h"
#include "support/held_signals.h"
#include "support/log_capture.h"
#include "support/scratch_directory.h"
#include "support/signal_action.h"
#include "support/thrown.h"

namespace corvane {
namespace {

// While it is set, a wait is over at once, and the time that it would have taken is kept here.
std::optional<timespec> longestWait;

}  // namespace
}  // namespace corvane

extern "C" int pselect(int nfds, fd_set* readable, fd_set* writable, fd_set* failed,
                       const timespec* timeout, const sigset_t* mask) {
    static const auto real = reinterpret_cast<decltype(&pselect)>(::dlsym(RTLD_NEXT, "pselect"));
    if (!corvane::longestWait) {
        return real(nfds, readable, writable, failed, timeout, mask);
    }
    corvane::longestWait = *timeout;
    return 0;
}

namespace corvane {
namespace {

using test::ChildReports;
using test::thrownBy;
using Lines = std::vector<std::string>;

class Opener : public ::testing::Test {
  protected:
    void install(const std::string& name) {
        ASSERT_EQ(::symlink(CHILD_REPORT, (bin + name).c_str()), 0);
    }
    void installScript(const std::string& text) {
        scratch.program("bin/xdg-open", "#!/bin/sh\n" + text);
    }

    test::ScratchDirectory scratch;
    std::string bin = scratch.directory("bin") + "/";
    test::EnvironmentVariable path{"PATH", bin};
    ChildReports reports{scratch};
    test::LogCapture log;
};

const std::string address = "http://server/page?a=b&c=%20#\xC4\x85";

TEST_F(Opener, HandsAnAddressToXdgOpen) {
    install("xdg-open");
    install("gio");
    openAddress(address);
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", address}));
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(Opener, HandsAnAddressToGioWhereThereIsNoXdgOpen) {
    install("gio");
    openAddress(address);
    EXPECT_EQ(reports.nextArguments(), (Lines{"gio", "open", address}));
}

TEST_F(Opener, PassesByAnXdgOpenThatCannotBeExecuted) {
    scratch.file("bin/xdg-open");
    install("gio");
    openAddress(address);
    EXPECT_EQ(reports.nextArguments(), (Lines{"gio", "open", address}));
}

TEST_F(Opener, GivesTheProgramTheNullDeviceAndNothingElse) {
    install("xdg-open");
    openAddress(address);
    const Lines report = reports.next();
    EXPECT_EQ(ChildReports::valuesOf(report, "descriptor").size(), 3U);
    EXPECT_EQ(ChildReports::valuesOf(report, "SigBlk:"), Lines{"0000000000000000"});
}

TEST_F(Opener, SaysWhatToInstallWhereThereIsNoProgram) {
    EXPECT_EQ(thrownBy<IOException>([] { openAddress("http://x/"); }),
              test::withCode("LSOpenCFURLRef error for file 'http://x/': no program to open it "
                             "with; install xdg-open (package xdg-utils) or gio",
                             ENOENT));
    const test::EnvironmentVariable none("PATH", std::nullopt);
    EXPECT_NE(thrownBy<IOException>([] { openAddress("http://x/"); }).find("no program"),
              std::string::npos);
}

TEST_F(Opener, WarnsAboutADocumentWhereThereIsNoProgram) {
    openDocument("a%s.txt");
    EXPECT_EQ(log.lines(), Lines{"WARN corvane.platform.open no program to open 'a%s.txt' with; "
                                 "install xdg-open (package xdg-utils) or gio"});
}

TEST_F(Opener, ReportsTheStatusOfAProgramThatFails) {
    installScript("exit 3\n");
    EXPECT_EQ(thrownBy<IOException>([] { openAddress("http://x/"); }),
              "LSOpenCFURLRef error for file 'http://x/' (3)");
}

TEST_F(Opener, ReportsAProgramThatIsKilled) {
    installScript("kill -9 $$\n");
    EXPECT_EQ(thrownBy<IOException>([] { openAddress("http://x/"); }),
              "LSOpenCFURLRef error for file 'http://x/' (137)");
}

TEST_F(Opener, ReportsAProgramThatCannotBeExecuted) {
    scratch.directory("bin/xdg-open");
    EXPECT_EQ(thrownBy<IOException>([] { openAddress("http://x/"); }),
              "LSOpenCFURLRef error for file 'http://x/' (255)");
}

TEST_F(Opener, IsContentWithAProgramThatIsStillRunning) {
    ASSERT_EQ(::mkfifo((scratch / "release").c_str(), 0600), 0);
    const test::EnvironmentVariable release("RELEASE", scratch / "release");
    installScript("read line < \"$RELEASE\"\necho end > \"$CHILD_REPORT\"\nexit 3\n");
    EXPECT_NO_THROW(openAddress("http://x/"));
    test::writeFile(scratch / "release", "go\n");
    EXPECT_EQ(reports.next(), Lines{});
    int status = 0;
    ASSERT_GT(::wait(&status), 0);
    EXPECT_EQ(WEXITSTATUS(status), 3);
}

TEST_F(Opener, CollectsTheProgramThatHasEnded) {
    installScript("exit 0\n");
    openAddress("http://x/");
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Opener, LeavesTheSignalMaskAsItWas) {
    sigset_t child;
    sigset_t previous;
    sigset_t after;
    ::sigemptyset(&child);
    ::sigaddset(&child, SIGCHLD);
    ::sigprocmask(SIG_UNBLOCK, &child, &previous);
    installScript("exit 0\n");
    openAddress("http://x/");
    ::sigprocmask(SIG_SETMASK, &previous, &after);
    EXPECT_EQ(sigismember(&after, SIGCHLD), 0);
}

TEST_F(Opener, LeavesADocumentThatWasClosedMeanwhileToTheHandlerOfChildren) {
    const HeldSignals signals;
    const test::SignalAction collect(SIGCHLD, [](int) {
        while (::waitpid(-1, nullptr, WNOHANG) > 0) {
        }
    });
    installScript("exit 0\n");
    openDocument("a.txt");
    siginfo_t ended{};
    ASSERT_EQ(::waitid(P_ALL, 0, &ended, WEXITED | WNOWAIT), 0);
    openAddress("http://x/");
    deliverPendingSignals();
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(Opener, IsPatientForASecond) {
    ASSERT_EQ(::mkfifo((scratch / "release").c_str(), 0600), 0);
    const test::EnvironmentVariable release("RELEASE", scratch / "release");
    installScript("read line < \"$RELEASE\"\n");
    longestWait = timespec{};
    openAddress("http://x/");
    const timespec waited = *std::exchange(longestWait, std::nullopt);
    EXPECT_TRUE((waited.tv_sec == 0 && waited.tv_nsec > 500'000'000) ||
                (waited.tv_sec == 1 && waited.tv_nsec == 0))
        << waited.tv_sec << " s " << waited.tv_nsec << " ns";
    test::writeFile(scratch / "release", "go\n");
    ::wait(nullptr);
}

TEST_F(Opener, RejectsWhatIsNoAddress) {
    install("xdg-open");
    for (const std::string target :
         {"://x", "1a://x", "a b://x", "http://x y", "http://<x>", "http://x\n", "http://x\x7F",
          "C\\:/x", "http://x|", "/a:/b", ":/"}) {
        EXPECT_EQ(thrownBy([&] { openAddress(target); }),
                  "Cannot create CFURLRef for '" + target + "'");
    }
}

TEST_F(Opener, AcceptsAnyScheme) {
    install("xdg-open");
    for (const std::string target : {"C:/Docs/a.txt", "x-y+z.1:/a", "file:///tmp"}) {
        openAddress(target);
        EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", target}));
    }
}

TEST_F(Opener, HandsADocumentToTheProgramWithoutWaiting) {
    install("xdg-open");
    openDocument("dir/some document.txt");
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", "dir/some document.txt"}));
    EXPECT_EQ(log.lines(), Lines{});
    ::wait(nullptr);
}

TEST_F(Opener, IgnoresAFailureWithADocument) {
    installScript("echo end > \"$CHILD_REPORT\"\nexit 3\n");
    openDocument("a.txt");
    EXPECT_EQ(reports.next(), Lines{});
    ::wait(nullptr);
}

TEST_F(Opener, NeverLetsTheNameOfADocumentLookLikeAnOption) {
    install("xdg-open");
    openDocument("--help.txt");
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", "./--help.txt"}));
    ::wait(nullptr);
}

}  // namespace
}  // namespace corvane
