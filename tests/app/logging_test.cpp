#include "app/logging.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <log4cpp/BasicLayout.hh>
#include <log4cpp/Category.hh>
#include <log4cpp/PatternLayout.hh>
#include <log4cpp/Priority.hh>
#include <log4cpp/SimpleLayout.hh>
#include <vector>

#include "fileutil/paths.h"
#include "platform/file_desc.h"
#include "support/environment.h"
#include "support/resource_limit.h"
#include "support/scratch_directory.h"
#include "text/exception.h"

namespace corvane {
namespace {

using log4cpp::Category;

/// The program seems to lie in "app" of a scratch directory, whose "home" is the home directory.
class LoggingTest : public testing::Test {
  protected:
    LoggingTest() : home("HOME", scratch.directory("home")) {
        scratch.directory("app");
        ARGC = 1;
        ARGV = arguments;
    }
    ~LoggingTest() override {
        Category::getRoot().removeAllAppenders();
        ARGC = 0;
        ARGV = nullptr;
    }

    void configure(bool console = false, int port = 54321) const {
        Log4cppConfigurator::configure("cv", settings, console, port);
    }

    std::string failure() const {
        try {
            configure();
        } catch (const ConfigureFailure& e) {
            return e.message;
        }
        return "none";
    }

    std::string log(const std::string& name = "app/cv54321.log") const {
        return test::readFile(scratch / name);
    }

    test::ScratchDirectory scratch;
    Properties settings{false};

  private:
    test::EnvironmentVariable home;
    std::string program = scratch / "app/corvane";
    char* arguments[2] = {program.data(), nullptr};
};

TEST_F(LoggingTest, LetsTheMaskAloneRestrictTheModeOfTheFile) {
    const mode_t previous = ::umask(0);
    configure();
    ::umask(previous);
    struct stat file {};
    ASSERT_EQ(::stat((scratch / "app/cv54321.log").c_str(), &file), 0);
    EXPECT_EQ(file.st_mode & 07777U, 0777U);
}

TEST_F(LoggingTest, WritesBesideTheProgramAtLevelDebugByDefault) {
    configure();
    EXPECT_EQ(Category::getRoot().getPriority(), log4cpp::Priority::DEBUG);
    Category::getInstance("corvane.test").debug("a line");
    EXPECT_NE(log().find(" [DEBUG,corvane.test] a line\n"), std::string::npos);
}

TEST_F(LoggingTest, KeepsPercentSignsOfALine) {
    settings.setProperty("log4cpp.pattern", "%p %m%n");
    configure();
    Category::getInstance("corvane.test").info(std::string("100% %s %d"));
    EXPECT_EQ(log(), "INFO 100% %s %d\n");
}

TEST_F(LoggingTest, AppendsAcrossRuns) {
    scratch.file("app/cv54321.log", "the run before\n");
    settings.setProperty("log4cpp.pattern", "%m%n");
    configure();
    configure();
    Category::getInstance("corvane.test").info("this run");
    EXPECT_EQ(log(), "the run before\nthis run\n");
}

TEST_F(LoggingTest, HasOneFileForEachPort) {
    settings.setProperty("log4cpp.pattern", "%m%n");
    configure(false, 1);
    Category::getInstance("corvane.test").info("first");
    configure(false, 2);
    Category::getInstance("corvane.test").info("second");
    EXPECT_EQ(log("app/cv1.log"), "first\n");
    EXPECT_EQ(log("app/cv2.log"), "second\n");
}

TEST_F(LoggingTest, TakesTheLevelByItsName) {
    settings.setProperty("log4cpp.priority", "WARN");
    settings.setProperty("log4cpp.pattern", "%m%n");
    configure();
    Category::getInstance("corvane.test").notice("hidden");
    Category::getInstance("corvane.test").warn("shown");
    EXPECT_EQ(log(), "shown\n");
}

TEST_F(LoggingTest, RefusesAnUnknownLevelBeforeItOpensTheFile) {
    settings.setProperty("log4cpp.priority", "LOUD");
    EXPECT_EQ(failure(),
              "Invalid priority (LOUD) in logging configuration file for category: root");
    EXPECT_FALSE(getFileMode(scratch / "app/cv54321.log"));
}

TEST_F(LoggingTest, FallsBackToAHiddenFileInTheHomeDirectory) {
    scratch.directory("app/cv54321.log");  // a file of that name cannot be opened then
    settings.setProperty("log4cpp.pattern", "%m%n");
    testing::internal::CaptureStderr();
    configure(true);
    const std::string path = scratch / "app/cv54321.log";
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "acs is -1\nError creating log '" + path +
                                                          "'\nTrying another log location '" +
                                                          (scratch / "home/.cv54321.log") + "'\n");
    Category::getInstance("corvane.test").info("a line");
    EXPECT_EQ(log("home/.cv54321.log"), "a line\n");
}

TEST_F(LoggingTest, DoesNotWaitForAReaderOfAPipe) {
    ASSERT_EQ(::mkfifo((scratch / "app/cv54321.log").c_str(), 0600), 0);
    settings.setProperty("log4cpp.pattern", "%m%n");
    ::alarm(20);  // instead of hanging for ever
    configure();
    Category::getInstance("corvane.test").info("a line");
    EXPECT_EQ(log("home/.cv54321.log"), "a line\n");
    ASSERT_EQ(::mkfifo((scratch / "app/cv1.log").c_str(), 0600), 0);
    ASSERT_EQ(::mkfifo((scratch / "home/.cv1.log").c_str(), 0600), 0);
    EXPECT_THROW(configure(false, 1), ConfigureFailure);
    ::alarm(0);
}

TEST_F(LoggingTest, WaitsForRoomInAPipeThatIsRead) {
    const std::string path = scratch / "app/cv54321.log";
    ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
    const FileDesc reader(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    const int next = test::nextDescriptor();
    configure();
    EXPECT_EQ(::fcntl(next, F_GETFL) & (O_NONBLOCK | O_APPEND), O_APPEND);
}

TEST_F(LoggingTest, FailsWhenNeitherPlaceCanBeWritten) {
    scratch.directory("app/cv54321.log");
    scratch.directory("home/.cv54321.log");
    EXPECT_EQ(failure(), "Cannot create log file " + (scratch / "home/.cv54321.log"));
}

TEST_F(LoggingTest, WritesTheSameLinesToTheConsole) {
    settings.setProperty("log4cpp.pattern", "%m%n");
    testing::internal::CaptureStderr();
    configure(true);
    Category::getInstance("corvane.test").info("a line");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "acs is -1\na line\n");
    EXPECT_EQ(log(), "a line\n");
}

TEST_F(LoggingTest, AppliesTheLevelToItsOwnFirstLine) {
    settings.setProperty("log4cpp.priority", "INFO");
    testing::internal::CaptureStderr();
    configure(true);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LoggingTest, LeavesTheConsoleAloneWhenItIsOff) {
    testing::internal::CaptureStderr();
    configure();
    Category::getInstance("corvane.test").info("a line");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(GetLayout, KnowsTheTwoFixedLayoutsInThisSpelling) {
    EXPECT_NE(dynamic_cast<log4cpp::BasicLayout*>(getLayout("basic").get()), nullptr);
    EXPECT_NE(dynamic_cast<log4cpp::SimpleLayout*>(getLayout("simple").get()), nullptr);
    const auto pattern = getLayout("Basic");
    auto* const layout = dynamic_cast<log4cpp::PatternLayout*>(pattern.get());
    ASSERT_NE(layout, nullptr);
    EXPECT_EQ(layout->getConversionPattern(), "Basic");
}

TEST_F(LoggingTest, HandsNoDescriptorOnToStartedPrograms) {
    constexpr int searched = 100;
    std::vector<bool> wasOpen;
    for (int fd = 0; fd < searched; ++fd) {
        wasOpen.push_back(::fcntl(fd, F_GETFD) != -1);
    }
    configure(true);
    int logs = 0;
    for (int fd = 0; fd < searched; ++fd) {
        const int flags = ::fcntl(fd, F_GETFD);
        if (flags != -1 && !wasOpen[static_cast<std::size_t>(fd)]) {
            EXPECT_NE(flags & FD_CLOEXEC, 0) << fd;
            ++logs;
        }
    }
    EXPECT_EQ(logs, 2);
}

}  // namespace
}  // namespace corvane
