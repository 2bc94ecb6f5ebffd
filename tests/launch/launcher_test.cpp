// Launching, with stand-ins for the desktop's opener and for programs.
#include "launch/launcher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <log4cpp/Category.hh>

#include "fileutil/properties.h"
#include "log/log_file.h"
#include "support/child_reports.h"
#include "support/command_fixture.h"
#include "support/environment.h"
#include "support/movie.h"
#include "support/thrown.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

using test::ChildReports;
using test::commandLine;
using test::failure;
using test::success;
using test::thrownBy;

class Launcher : public test::CommandTest {
  protected:
    ~Launcher() override {
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
        props.clear();
    }
    void installOpener() { installProgram("bin/xdg-open"); }
    std::string installProgram(const std::string& name) {
        std::string program = scratch.file(name);
        EXPECT_EQ(::unlink(program.c_str()), 0);
        EXPECT_EQ(::symlink(CHILD_REPORT, program.c_str()), 0);
        return program;
    }
    // The lines of an execute command that begins with `target`, in the scratch directory.
    std::string executeLine(const std::string& target) const {
        return commandLine("DEBUG", "execute",
                           ": execute app '" + target + "' currdir '" +
                               std::filesystem::current_path().string() + "/'");
    }

    test::EnvironmentVariable path{"PATH", scratch / "bin"};
    ChildReports reports{scratch};
    test::WorkingDirectory inside{scratch.path()};
};

TEST(PlatformExecPath, ReplacesTheEndingOfWindowsPrograms) {
    EXPECT_EQ(getPlatformExecPath("C:/Tools/setup.exe"), "C:/Tools/setup_mac");
    EXPECT_EQ(getPlatformExecPath(".exe"), "_mac");
    EXPECT_EQ(getPlatformExecPath("a.b.exe"), "a.b_mac");
}

TEST(PlatformExecPath, KeepsEverythingElse) {
    for (const std::string path :
         {"setup.EXE", "setup.Exe", "setup", "exe", "", "a.exe/b", "a.exe ", "a.exe.txt", "aexe"}) {
        EXPECT_EQ(getPlatformExecPath(path), path);
    }
}

TEST_F(Launcher, KnowsTheApplicationOfAnExtension) {
    props.setProperty("app.pdf", "plain");
    EXPECT_EQ(getAppForExtension("pdf"), "plain");
    props.setProperty("app.pdf.mac", "marked");
    EXPECT_EQ(getAppForExtension("pdf"), "marked");
    EXPECT_EQ(getAppForExtension("PDF"), "marked");
    props.setProperty("app.pdf.mac", "");
    EXPECT_EQ(getAppForExtension("pdf"), "plain");
    EXPECT_EQ(getAppForExtension("txt"), "");
    EXPECT_EQ(resolveApp("any app"), "any app");
}

TEST_F(Launcher, CreatesAProcessWithItsArguments) {
    const std::string program = installProgram("program");
    const pid_t pid = createProcess(program, {"a", "b c"});
    const std::vector<std::string> report = reports.next();
    EXPECT_EQ(ChildReports::valuesOf(report, "argument"), (Lines{program, "a", "b c"}));
    EXPECT_EQ(ChildReports::valuesOf(report, "descriptor"), Lines{});
    int status = -1;
    EXPECT_EQ(::waitpid(pid, &status, 0), pid);
    EXPECT_EQ(status, 0);
}

TEST_F(Launcher, CreatesAProcessWithoutArguments) {
    const std::string program = installProgram("program");
    EXPECT_GT(createProcess(program), 0);
    EXPECT_EQ(reports.nextArguments(), Lines{program});
}

TEST_F(Launcher, StartsATargetWithoutAnExtensionAsAProgram) {
    const std::string program = installProgram("Some.App/Contents");
    EXPECT_EQ(shellexecute(program.c_str()), 0);
    EXPECT_EQ(reports.nextArguments(), Lines{program});
}

TEST_F(Launcher, SearchesAProgramInThePath) {
    installProgram("bin/mailto:x");
    EXPECT_EQ(shellexecute("mailto:x"), 0);
    EXPECT_EQ(reports.nextArguments(), Lines{"mailto:x"});
}

TEST_F(Launcher, ReportsNoProgramThatCannotBeStarted) {
    EXPECT_EQ(shellexecute((scratch / "missing").c_str()), 0);
    EXPECT_EQ(shellexecute(""), 0);
}

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

TEST_F(Launcher, ExecuteCorrectsTheTargetAndStartsIt) {
    const std::string program = installProgram("tool_mac");
    std::string target = scratch / "tool.exe?x=1";
    std::replace(target.begin(), target.end(), '/', '\\');
    EXPECT_EQ(ask("execute", target + "\r\n"), success("execute"));
    EXPECT_EQ(log.lines(), Lines{executeLine(program)});
    EXPECT_EQ(reports.nextArguments(), Lines{program});
}

TEST_F(Launcher, ExecuteCutsAtTheLastQuestionMark) {
    installOpener();
    EXPECT_EQ(ask("execute", "http://server/a?b=1?c"), success("execute"));
    EXPECT_EQ(reports.nextArguments(), (Lines{"xdg-open", "http://server/a?b=1"}));
}

TEST_F(Launcher, ExecuteSucceedsAlsoForAProgramThatIsMissing) {
    EXPECT_EQ(ask("execute", scratch / "missing"), success("execute"));
    EXPECT_EQ(log.lines(), Lines{executeLine(scratch / "missing")});
    EXPECT_EQ(ask("execute"), success("execute"));
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
