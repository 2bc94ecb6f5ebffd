#include "fileutil/open_directory.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "fileutil/files_fixture.h"
#include "support/resource_limit.h"
#include "support/working_directory.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

class OpenDirectories : public test::FilesTest {
  protected:
    FileDesc open(const std::string& path) const {
        return openDirectory(path, DirectoryAccess::Read);
    }
};

TEST_F(OpenDirectories, KnowWhetherAPathLiesWithin) {
    scratch.file("a/b/file");
    scratch.directory("ab");
    fs::create_directory_symlink("a", scratch / "link");
    const std::string a = scratch / "a";
    for (const char* inside :
         {"a", "a/", "a/b", "a/b/file", "a/b/missing/er", "link", "link/b", "link/x", "ab/../a"}) {
        EXPECT_TRUE(liesWithin(scratch / inside, a)) << inside;
    }
    for (const char* outside : {"", "ab", "missing", "a/..", "a/../x", "link/../ab"}) {
        EXPECT_FALSE(liesWithin(scratch / outside, a)) << outside;
    }
    EXPECT_FALSE(liesWithin(a, scratch / "missing"));
    EXPECT_TRUE(liesWithin(a, "/"));
    EXPECT_FALSE(liesWithin("/", a));
}

TEST_F(OpenDirectories, TakeAnEmptyPathForTheCurrentOne) {
    const test::WorkingDirectory inside(scratch.directory("a/b"));
    EXPECT_TRUE(liesWithin("", scratch / "a"));
    EXPECT_TRUE(liesWithin("missing", scratch / "a/b"));
    EXPECT_FALSE(liesWithin("..", scratch / "a/b"));
}

TEST_F(OpenDirectories, AreFoundAgainFromDeepDown) {
    constexpr int levels = 120;
    DirectoryChain chain(open(scratch.path()), DirectoryAccess::Read);
    std::vector<DirectoryIdentity> seen{identityOf(chain.current())};
    const int before = test::nextDescriptor();
    for (int i = 0; i < levels; ++i) {
        ASSERT_EQ(::mkdirat(chain.current(), "d", 0777), 0);
        ASSERT_TRUE(chain.descend("d", false));
        seen.push_back(identityOf(chain.current()));
    }
    EXPECT_LT(test::nextDescriptor() - before, 60);
    for (int i = levels - 1; i >= 0; --i) {
        ASSERT_TRUE(chain.ascend()) << i;
        EXPECT_EQ(identityOf(chain.current()), seen[static_cast<std::size_t>(i)]) << i;
    }
}

TEST_F(OpenDirectories, AreNotMistakenForOthersAfterAMove) {
    DirectoryChain chain(open(scratch.directory("top")), DirectoryAccess::Read);
    std::string path = scratch / "top";
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(::mkdirat(chain.current(), "d", 0777), 0);
        ASSERT_TRUE(chain.descend("d", false));
        path += "/d";
    }
    ASSERT_EQ(::rename(path.c_str(), (scratch / "moved").c_str()), 0);
    errno = 0;
    EXPECT_FALSE(chain.ascend());
    EXPECT_EQ(errno, ENOENT);
}

TEST_F(OpenDirectories, FollowLinksOnlyWhenAsked) {
    scratch.directory("real");
    fs::create_directory_symlink("real", scratch / "link");
    scratch.file("file");
    DirectoryChain chain(open(scratch.path()), DirectoryAccess::Read);
    EXPECT_FALSE(chain.descend("link", false));
    EXPECT_FALSE(chain.descend("missing", true));
    EXPECT_FALSE(chain.descend("file", true));
    EXPECT_EQ(identityOf(chain.current()), identityOf(open(scratch.path())));
    ASSERT_TRUE(chain.descend("link", true));
    EXPECT_EQ(identityOf(chain.current()), identityOf(open(scratch / "real")));
}

TEST(FileDesc, ClosesItsDescriptorOnce) {
    FileDesc file(::open("/dev/null", O_RDONLY));
    const int fd = file;
    EXPECT_EQ(file.close(), 0);
    EXPECT_EQ(file, -1);
    EXPECT_EQ(::fcntl(fd, F_GETFD), -1);
    EXPECT_EQ(file.close(), -1);
    EXPECT_EQ(FileDesc().close(), -1);
}

TEST(FileDesc, GivesItsDescriptorAway) {
    const int before = test::nextDescriptor();
    {
        FileDesc first(::open("/dev/null", O_RDONLY));
        FileDesc second(std::move(first));
        FileDesc third(::open("/dev/null", O_RDONLY));
        third = std::move(second);
        const int fd = third.release();
        EXPECT_EQ(::close(fd), 0);
    }
    EXPECT_EQ(test::nextDescriptor(), before);
}

}  // namespace
}  // namespace corvane
