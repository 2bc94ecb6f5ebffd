// Files that another program holds a lease on, as a file server does for its clients: they are
// waited for, like any program that opens them would.
#include <gtest/gtest.h>

#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "fileutil/properties.h"
#include "support/lease.h"

namespace corvane {
namespace {

class LeasedFile : public test::FilesTest {};

TEST_F(LeasedFile, IsWaitedForAsTheSourceOfACopy) {
    const test::Lease lease(scratch.file("src", "text"));
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    copyFile(scratch / "src", scratch / "dst");
    EXPECT_EQ(test::readFile(scratch / "dst"), "text");
    EXPECT_TRUE(lease.wasRequested());
}

TEST_F(LeasedFile, IsWaitedForAsTheTargetOfACopy) {
    const test::Lease lease(scratch.file("dst"));
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    copyFile(scratch.file("src", "text"), scratch / "dst");
    EXPECT_EQ(test::readFile(scratch / "dst"), "text");
    EXPECT_TRUE(lease.wasRequested());
}

TEST_F(LeasedFile, IsWaitedForAsAPropertyFile) {
    const test::Lease lease(scratch.file("settings", "key=value\n"));
    if (!lease.isGiven()) {
        GTEST_SKIP() << "no leases in " << scratch.path();
    }
    Properties store(false);
    store.load(scratch / "settings");
    EXPECT_STREQ(store.getProperty("key"), "value");
    EXPECT_TRUE(lease.wasRequested());
}

}  // namespace
}  // namespace corvane
