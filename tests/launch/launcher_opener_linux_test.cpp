// Launching by the desktop's opener, with a stand-in for it; macOS has a program of its own for
// that.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <log4cpp/Category.hh>

#include "launch/launcher.h"
#include "launch/launcher_fixture.h"
#include "log/log_file.h"
#include "support/movie.h"
#include "support/thrown.h"

namespace corvane {
namespace {

using test::commandLine;
using test::failure;
using test::Launcher;
using test::success;
using test::thrownBy;

TEST_F(Launcher, OpensATargetWithAnExtensionAsADocument) {
    installOpener();
    for (const std::string target : {"dir/a.txt", "Tool.app", "missing.pdf", ".profile"}) {
        EXPECT_EQ(shellexecute(target.c_str()), 0);
        EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", target}));
    }
}

TEST_F(Launcher, OpensATargetWithASchemeAsAnAddress) {
    installOpener();
    for (const std::string target :
         {"http://server/page", "C:/Docs/a.txt", "http://server/a.html"}) {
        EXPECT_EQ(shellexecute(target.c_str()), 0);
        EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", target}));
    }
}

TEST_F(Launcher, OpensAMovieThroughAPage) {
    installOpener();
    scratch.file("movie.swf", test::plainMovie(test::packed({15, {0, 11000, 0, 8000}})));
    for (const std::string target :
         {"movie.swf", "http://server/page.swf", "a.swf2", "dir.swf/x", "x:/y.swf"}) {
        EXPECT_EQ(shellexecute(target.c_str()), 0);
        const Lines arguments = reports.nextArguments();
        ASSERT_EQ(arguments.size(), 2U);
        const std::string page = test::readFile(arguments[1]);
        EXPECT_NE(page.find("src=\"" + target + "\""), std::string::npos) << arguments[1];
        EXPECT_EQ(page.find("width=\"550\"") != std::string::npos, target == "movie.swf");
        ::unlink(arguments[1].c_str());
    }
}

TEST_F(Launcher, TakesOtherSpellingsOfAMovieForADocument) {
    installOpener();
    EXPECT_EQ(shellexecute("movie.SWF"), 0);
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", "movie.SWF"}));
}

TEST_F(Launcher, FailsForWhatIsNoAddress) {
    EXPECT_EQ(thrownBy([] { shellexecute("no address:/ at all"); }),
              "Cannot create CFURLRef for 'no address:/ at all'");
}

TEST_F(Launcher, ExecuteCutsAtTheLastQuestionMark) {
    installOpener();
    EXPECT_EQ(ask("execute", "http://server/a?b=1?c"), success("execute"));
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", "http://server/a?b=1"}));
}

TEST_F(Launcher, ExecuteSucceedsAlsoForADocumentWithoutAnOpener) {
    EXPECT_EQ(ask("execute", "a.txt"), success("execute"));
    EXPECT_EQ(log.lines(),
              (Lines{executeLine("a.txt"),
                     "WARN corvane.platform.open no program to open 'a.txt' with; install xdg-open "
                     "(package xdg-utils) or gio"}));
}

TEST_F(Launcher, ExecuteFailsForAnAddressThatTheOpenerRefuses) {
    scratch.program("bin/xdg-open", "#!/bin/sh\nexit 4\n");
    EXPECT_EQ(ask("execute", "http://server/"), failure("execute"));
    EXPECT_EQ(log.lines(),
              (Lines{executeLine("http://server/"),
                     commandLine("ERROR", "execute",
                                 ": ERROR: 'LSOpenCFURLRef error for file 'http://server/' "
                                 "(4)'")}));
}

// The opener looks for the line itself.

TEST_F(Launcher, ExecuteIsInTheLogBeforeAnythingStarts) {
    const std::string name = scratch.file("log");
    LogFile file("log", ::open(name.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC));
    const std::string opener = scratch.file("bin/xdg-open",
                                            "#!/bin/sh\n"
                                            "while read -r line; do\n"
                                            "  case $line in *'execute app'*) exit 0 ;; esac\n"
                                            "done < '" +
                                                name +
                                                "'\n"
                                                "exit 1\n");
    ASSERT_EQ(::chmod(opener.c_str(), 0700), 0);
    log4cpp::Category::getRoot().addAppender(file);
    {
        const LogBatch linesOfTheRequest;
        EXPECT_EQ(ask("execute", "http://server/"), success("execute"));
    }
    log4cpp::Category::getRoot().removeAppender(&file);
}

TEST_F(Launcher, ExecuteFailsForAnAddressWithoutAnOpener) {
    EXPECT_EQ(ask("execute", "http://server/"), failure("execute"));
    EXPECT_EQ(log.lines().back(),
              commandLine("ERROR", "execute",
                          test::withCode(": ERROR: 'LSOpenCFURLRef error for file "
                                         "'http://server/': no program to open it with; install "
                                         "xdg-open (package xdg-utils) or gio",
                                         ENOENT) +
                              "'"));
}

TEST_F(Launcher, ExecuteFailsForWhatIsNoAddress) {
    EXPECT_EQ(ask("execute", "a b:/c"), failure("execute"));
    EXPECT_EQ(
        log.lines(),
        (Lines{executeLine("a b:/c"),
               commandLine("ERROR", "execute", ": ERROR: 'Cannot create CFURLRef for 'a b:/c''")}));
}

}  // namespace
}  // namespace corvane
