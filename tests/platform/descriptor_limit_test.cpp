#include "platform/descriptor_limit.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/wait.h>

#include <algorithm>

#include "platform/process.h"
#include "support/resource_limit.h"
#include "support/scratch_directory.h"

namespace corvane {
namespace {

rlimit limits() {
    rlimit result{};
    ::getrlimit(RLIMIT_NOFILE, &result);
    return result;
}

// One test, because the limit is raised once in the life of a process.
TEST(DescriptorLimit, IsRaisedForTheServerAndNotForItsChildren) {
    const rlimit before = limits();
    if (before.rlim_max <= FD_SETSIZE) {
        GTEST_SKIP() << "this system allows no more than " << before.rlim_max << " descriptors";
    }
    {
        const test::ResourceLimit high(RLIMIT_NOFILE, FD_SETSIZE + 1);
        raiseDescriptorLimit();
        EXPECT_EQ(limits().rlim_cur, rlim_t{FD_SETSIZE + 1}) << "a higher one is left alone";
    }
    const test::ResourceLimit low(RLIMIT_NOFILE, 100);
    raiseDescriptorLimit();
    EXPECT_EQ(limits().rlim_cur, rlim_t{FD_SETSIZE});
    EXPECT_EQ(limits().rlim_max, before.rlim_max);

    const test::ScratchDirectory scratch;
    const pid_t child = startProgram({"/bin/sh", "-c", "ulimit -n > '" + (scratch / "limit") + "'"},
                                     StandardStreams::NullDevice);
    ASSERT_GT(child, 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    EXPECT_EQ(test::readFile(scratch / "limit"), "100\n");
}

}  // namespace
}  // namespace corvane
