// When the lines of a log file are written: at once, or with the others of a batch.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <log4cpp/Category.hh>
#include <log4cpp/SimpleLayout.hh>
#include <memory>
#include <string>

#include "log/log.h"
#include "log/log_file.h"
#include "platform/process.h"
#include "platform/waiting.h"
#include "support/log_file_fixture.h"

namespace corvane {
namespace {

using LogBatchTest = test::LogFileTest;

TEST_F(LogBatchTest, WritesEveryLineAtOnceOutsideABatch) {
    log.info("one");
    EXPECT_EQ(written(), "INFO    : one\n");
}

TEST_F(LogBatchTest, CollectsLinesUntilItsEnd) {
    {
        const LogBatch batch;
        log.info("one");
        {
            const LogBatch inner;
            log.info("two");
        }
        EXPECT_EQ(written(), "");
    }
    EXPECT_EQ(written(), "INFO    : one\nINFO    : two\n");
}

TEST_F(LogBatchTest, IsWrittenWhenAsked) {
    const LogBatch batch;
    log.info("one");
    flushLog();
    EXPECT_EQ(written(), "INFO    : one\n");
    log.info("two");
    EXPECT_EQ(written(), "INFO    : one\n");
}

TEST_F(LogBatchTest, IsWrittenBeforeEveryWait) {
    const LogBatch batch;
    log.info("one");
    waitForSockets(0, nullptr, nullptr, deadlineAfter(-1));
    EXPECT_EQ(written(), "INFO    : one\n");
}

TEST_F(LogBatchTest, IsWrittenBeforeAProgramStarts) {
    const LogBatch batch;
    log.info("one");
    const pid_t pid = startProgram({"true"}, StandardStreams::NullDevice);
    EXPECT_EQ(written(), "INFO    : one\n");
    ::waitpid(pid, nullptr, 0);
}

TEST_F(LogBatchTest, KeepsTheOrderOfLinesThatAreTooMuchForIt) {
    const std::string half(40'000, 'a');
    const std::string whole(70'000, 'b');
    {
        const LogBatch batch;
        for (const std::string& line : {half, half, whole, half}) {
            log.info(line);
        }
    }
    EXPECT_TRUE(written() == "INFO    : " + half + "\nINFO    : " + half + "\nINFO    : " + whole +
                                 "\nINFO    : " + half + "\n");
}

TEST_F(LogBatchTest, IsWrittenWhenTheLogIsClosed) {
    const LogBatch batch;
    log.info("one");
    close();
    EXPECT_EQ(written(), "INFO    : one\n");
}

TEST_F(LogBatchTest, IsWrittenWhenItIsFull) {
    const std::string half(40'000, 'a');
    const LogBatch batch;
    log.info(half);
    EXPECT_EQ(written(), "");
    log.info(half);
    EXPECT_TRUE(written() == "INFO    : " + half + "\n");
}

TEST_F(LogBatchTest, IsWrittenToEveryLog) {
    const std::string otherPath = scratch / "other.log";
    auto other = std::make_unique<LogFile>(
        "other", ::open(otherPath.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
    other->setLayout(new log4cpp::SimpleLayout());
    log4cpp::Category::getRoot().addAppender(other.release());
    const LogBatch batch;
    log.info("one");
    flushLog();
    EXPECT_EQ(written(), "INFO    : one\n");
    EXPECT_EQ(test::readFile(otherPath), "INFO    : one\n");
}

TEST_F(LogBatchTest, KeepsTheErrorOfItsWritingToItself) {
    open(::open("/dev/null", O_RDONLY | O_CLOEXEC));  // writing to it fails
    const LogBatch batch;
    log.info("lost");
    errno = ENOTTY;
    flushLog();
    EXPECT_EQ(errno, ENOTTY);
}

}  // namespace
}  // namespace corvane
