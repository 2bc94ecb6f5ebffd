// What only the macOS half of platform/system.h does.
#include <gtest/gtest.h>

#include <string>

#include "platform/system.h"
#include "support/environment.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

TEST(TemporaryDirectory, IsTheCommonOneWhateverTheEnvironmentNames) {
    const test::ScratchDirectory scratch;
    const test::EnvironmentVariable set("TMPDIR", scratch.directory("t"));
    EXPECT_EQ(platform::temporaryDirectory(), "/tmp/");
}

}  // namespace
}  // namespace corvane
