// When the lines of a log file are written: at once, or with the others of a batch.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <log4cpp/Category.hh>
#include <string>

#include "log/log.h"
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

}  // namespace
}  // namespace corvane
