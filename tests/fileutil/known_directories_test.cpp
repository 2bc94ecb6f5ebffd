// The functions of paths.h that ask the system.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/files_fixture.h"
#include "fileutil/paths.h"
#include "platform/system.h"
#include "support/environment.h"
#include "support/log_capture.h"
#include "support/thrown.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

using test::EnvironmentVariable;
using Lines = std::vector<std::string>;

class Directories : public test::FilesTest {
  protected:
    test::LogCapture log;
};

TEST_F(Directories, KnowTheModeOfAFile) {
    const std::string file = scratch.file("f");
    ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
    EXPECT_EQ(getFileMode(file), static_cast<mode_t>(S_IFREG | 0640));
    EXPECT_EQ(getFileMode(scratch / "missing"), 0U);
    EXPECT_EQ(getFileMode(""), 0U);
}

TEST_F(Directories, AreToldFromFilesWithOrWithoutASeparatorAtTheEnd) {
    const std::string directory = scratch.directory("d");
    EXPECT_TRUE(isDirectory(directory));
    EXPECT_TRUE(isDirectory(directory + "/"));
    EXPECT_TRUE(isDirectory(directory + "\\"));
    EXPECT_TRUE(isDirectory(directory + "//"));
    EXPECT_FALSE(isDirectory(scratch.file("f")));
    EXPECT_FALSE(isDirectory(scratch / "f/"));
    EXPECT_FALSE(isDirectory(scratch / "missing"));
}

TEST_F(Directories, DoNotIncludeTheRootItself) {
    EXPECT_FALSE(isDirectory("/"));
    EXPECT_TRUE(isDirectory("//"));
}

TEST_F(Directories, AreFollowedThroughSymbolicLinks) {
    std::filesystem::create_symlink(scratch.directory("d"), scratch / "link");
    EXPECT_TRUE(isDirectory(scratch / "link"));
}

TEST_F(Directories, GiveTheCurrentOneWithASeparatorAtTheEnd) {
    const test::WorkingDirectory inside(scratch.path());
    EXPECT_EQ(getCurrentDirectory(), std::filesystem::canonical(scratch.path()).string() + "/");
}

TEST_F(Directories, GiveTheRootWithOneSeparator) {
    const test::WorkingDirectory inside("/");
    EXPECT_EQ(getCurrentDirectory(), "/");
}

TEST_F(Directories, GiveNoCurrentOneWhenItIsGone) {
    const std::string gone = scratch.directory("gone");
    const test::WorkingDirectory inside(gone);
    ASSERT_EQ(::rmdir(gone.c_str()), 0);
    EXPECT_EQ(getCurrentDirectory(), "");
}

TEST_F(Directories, RememberTheStartUpDirectory) {
    const std::string before = startupDirectory;
    {
        const test::WorkingDirectory inside(scratch.path());
        initStartupDirectory();
    }
    EXPECT_EQ(getStartupDirectory(), std::filesystem::canonical(scratch.path()).string() + "/");
    startupDirectory = before;
}

TEST_F(Directories, ChangeTheCurrentOneOrGiveTheErrorNumber) {
    const test::WorkingDirectory restored(scratch.path());
    const std::string directory = scratch.directory("d");
    EXPECT_EQ(changeCurrentDirectory(directory.c_str()), 0);
    EXPECT_EQ(getCurrentDirectory(), std::filesystem::canonical(directory).string() + "/");
    EXPECT_EQ(changeCurrentDirectory((scratch / "missing").c_str()), ENOENT);
    EXPECT_EQ(changeCurrentDirectory(scratch.file("f").c_str()), ENOTDIR);
    EXPECT_EQ(getCurrentDirectory(), std::filesystem::canonical(directory).string() + "/");
}

TEST_F(Directories, GiveTheTemporaryOneThatTheSystemChooses) {
    EXPECT_EQ(getTempDirectory(), platform::temporaryDirectory());
    EXPECT_TRUE(getTempDirectory().ends_with('/'));
}

TEST_F(Directories, CreateNothingWhenTheTemporaryOneIsAskedFor) {
    const EnvironmentVariable variable("TMPDIR", scratch.directory("t"));
    getTempDirectory();
    EXPECT_TRUE(std::filesystem::is_empty(scratch / "t"));
}

TEST_F(Directories, TakeTheHomeFromTheFirstVariableThatIsSet) {
    const EnvironmentVariable home("HOME", "/h\\x/");
    const EnvironmentVariable profile("USERPROFILE", "/p");
    const EnvironmentVariable temp("TEMP", "/t");
    const EnvironmentVariable tmp("TMP", "/m");
    EXPECT_EQ(getUserDirectory(), "/h\\x/");
    {
        const EnvironmentVariable none("HOME", {});
        EXPECT_EQ(getUserDirectory(), "/p");
        const EnvironmentVariable noProfile("USERPROFILE", {});
        EXPECT_EQ(getUserDirectory(), "/t");
        const EnvironmentVariable noTemp("TEMP", {});
        EXPECT_EQ(getUserDirectory(), "/m");
        const EnvironmentVariable noTmp("TMP", {});
        EXPECT_EQ(getUserDirectory(), "");
    }
    const EnvironmentVariable empty("HOME", "");
    EXPECT_EQ(getUserDirectory(), "");
}

TEST_F(Directories, GiveTheDesktopWithoutASeparatorAtTheEnd) {
    const EnvironmentVariable home("HOME", scratch.path());
    scratch.directory("Desktop");
    EXPECT_EQ(getUserDesktop(), scratch / "Desktop");
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(Directories, GiveNoDesktopWhereThereIsNone) {
    const EnvironmentVariable home("HOME", scratch / "home");
    EXPECT_EQ(getUserDesktop(), "");
    EXPECT_EQ(log.lines(), Lines{"DEBUG corvane.fileutil.getUserDesktop path '" +
                                 (scratch / "home/Desktop") + "' is not directory"});
}

TEST_F(Directories, GiveTheLoginNameOrNothing) {
    const char* login = ::getlogin();
    EXPECT_EQ(getUserName(), login == nullptr ? "" : login);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(Directories, TakeAFullProgramPathUntested) {
    const test::ProgramArguments arguments({"/nowhere/./corvane", "ignored"});
    EXPECT_EQ(getApplicationPath(), "/nowhere/./corvane");
    EXPECT_EQ(getApplicationDirectory(), "/nowhere/./");
}

TEST_F(Directories, PutTheStartUpDirectoryBeforeARelativeProgramPath) {
    const std::string before = std::exchange(startupDirectory, scratch.path());
    scratch.file("bin/corvane");
    const test::ProgramArguments arguments({"./bin/corvane"});
    EXPECT_EQ(getApplicationPath(), scratch / "./bin/corvane");
    EXPECT_EQ(getApplicationDirectory(), scratch / "./bin/");
    startupDirectory = before;
}

TEST_F(Directories, SayWhereTheProgramWasLookedForLast) {
    const std::string before = std::exchange(startupDirectory, scratch.path());
    const test::ProgramArguments arguments({"corvane"});
    const std::string message = test::withCode(
        "cannot find application path. last path '" + (scratch / "corvane") + "'", ENOENT);
    EXPECT_EQ(test::thrownBy<IOException>([] { getApplicationPath(); }), message);
    EXPECT_EQ(test::thrownBy<IOException>([] { getApplicationDirectory(); }), message);
    startupDirectory = before;
}

TEST_F(Directories, TakeTheStartUpDirectoryForAProgramWithoutAName) {
    const std::string before = std::exchange(startupDirectory, scratch.directory("here") + "/");
    const test::ProgramArguments arguments({""});
    EXPECT_EQ(getApplicationPath(), scratch / "here/");
    EXPECT_EQ(getApplicationDirectory(), scratch / "here/");
    startupDirectory = scratch / "gone/";
    EXPECT_EQ(test::thrownBy<IOException>([] { getApplicationPath(); }),
              test::withCode(
                  "cannot find application path. last path '" + (scratch / "gone/") + "'", ENOENT));
    startupDirectory = before;
}

TEST_F(Directories, HaveNoProgramPathWithoutArguments) {
    const test::ProgramArguments arguments({});
    EXPECT_EQ(test::thrownBy<IOException>([] { getApplicationPath(); }),
              test::withCode("cannot find application path. last path ''", ENOENT));
}

TEST(CurrentTimeMillis, IsTheWallClockModulo32Bits) {
    timeval before{};
    timeval after{};
    ::gettimeofday(&before, nullptr);
    const std::uint32_t now = currentTimeMillis();
    ::gettimeofday(&after, nullptr);
    const auto millis = [](const timeval& t) {
        return static_cast<std::uint32_t>(static_cast<std::uint64_t>(t.tv_sec) * 1000 +
                                          static_cast<std::uint64_t>(t.tv_usec) / 1000);
    };
    EXPECT_LE(now - millis(before), millis(after) - millis(before));
}

}  // namespace
}  // namespace corvane
