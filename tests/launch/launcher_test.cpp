// Launching, with stand-ins for programs.
#include "launch/launcher.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>

#include "fileutil/properties.h"
#include "launch/launcher_fixture.h"
#include "support/child_reports.h"

namespace corvane {
namespace {

using test::ChildReports;
using test::Launcher;
using test::success;

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

TEST_F(Launcher, ExecuteCorrectsTheTargetAndStartsIt) {
    const std::string program = installProgram("tool_mac");
    std::string target = scratch / "tool.exe?x=1";
    std::replace(target.begin(), target.end(), '/', '\\');
    EXPECT_EQ(ask("execute", target + "\r\n"), success("execute"));
    EXPECT_EQ(log.lines(), Lines{executeLine(program)});
    EXPECT_EQ(reports.nextArguments(), Lines{program});
}

TEST_F(Launcher, ExecuteSucceedsAlsoForAProgramThatIsMissing) {
    EXPECT_EQ(ask("execute", scratch / "missing"), success("execute"));
    EXPECT_EQ(log.lines(), Lines{executeLine(scratch / "missing")});
    EXPECT_EQ(ask("execute"), success("execute"));
}

}  // namespace
}  // namespace corvane
