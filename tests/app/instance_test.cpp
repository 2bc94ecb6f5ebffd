#include "app/instance.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "support/log_capture.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

TEST(PidFile, RecordsNothingAndAlwaysPasses) {
    const test::ScratchDirectory scratch;
    PidFile file;
    const std::string path = scratch.file("guard", "somebody else's");
    EXPECT_TRUE(file.create(path.c_str()));
    EXPECT_TRUE(file.create(path.c_str()));
    EXPECT_EQ(file.release(), 0);
    EXPECT_EQ(test::readFile(path), "somebody else's");
}

TEST(UnixProcessExists, KnowsThisProcess) {
    EXPECT_TRUE(unixProcessExists(::getpid()));
    EXPECT_FALSE(unixProcessExists(-2));
}

TEST(CheckInstance, LetsASecondInstancePass) {
    const test::LogCapture log;
    checkInstance("cv", 54321);
    checkInstance("cv", 54321);
    EXPECT_TRUE(log.lines().empty());
}

}  // namespace
}  // namespace corvane
