// The confinement by the kernel, also as older kernels would do it: each version of Landlock up to
// the kernel's own takes its turn.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/confinement.h"
#include "support/in_child.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"
#include "text/exception.h"

namespace corvane::platform {
namespace {

using test::inChild;
using test::readFile;

const std::string nothing = "nothing was thrown";

class ConfinementTest : public testing::Test {
  protected:
    void SetUp() override {
        if (Confinement::kernelVersion() == 0) {
            GTEST_SKIP() << "the kernel has no Landlock, or it is switched off";
        }
    }

    /// What `work` returns in a process that may change "in" and read "ro".
    template <typename Work>
    int confined(int version, Work work) const {
        return inChild([&] {
            Confinement({{in, Access::Change}, {ro, Access::Read}}, version).enforce();
            return work();
        });
    }
    /// The errno value of opening a file; 0 for none.
    static int opening(const std::string& path, int flags) {
        return ::open(path.c_str(), flags, 0600) == -1 ? errno : 0;
    }
    static int resultOf(int result) { return result == 0 ? 0 : errno; }

    /// Calls `check` with each version that the kernel knows.
    template <typename Check>
    static void forEachVersion(Check check) {
        for (int version = 1; version <= Confinement::kernelVersion(); ++version) {
            SCOPED_TRACE(version);
            check(version);
        }
    }

    test::ScratchDirectory scratch;
    std::string in = scratch.directory("in");
    std::string ro = scratch.directory("ro");
    std::string own = scratch.file("in/own", "own");
    std::string readable = scratch.file("ro/readable", "readable");
    std::string secret = scratch.file("out/secret", "secret");
    std::string out = scratch / "out";
};

TEST_F(ConfinementTest, RefusesWhatLiesOutsideInEveryVersion) {
    forEachVersion([&](int version) {
        EXPECT_EQ(confined(version, [&] { return opening(secret, O_RDONLY); }), EACCES);
        EXPECT_EQ(confined(version, [&] { return opening(secret, O_WRONLY); }), EACCES);
        EXPECT_EQ(confined(version, [&] { return opening(out, O_RDONLY | O_DIRECTORY); }), EACCES);
        EXPECT_EQ(confined(version, [&] { return opening(out + "/new", O_WRONLY | O_CREAT); }),
                  EACCES);
        EXPECT_EQ(
            confined(version, [&] { return resultOf(::mkdir((out + "/new").c_str(), 0700)); }),
            EACCES);
        EXPECT_EQ(confined(version, [&] { return resultOf(::unlink(secret.c_str())); }), EACCES);
    });
    EXPECT_EQ(readFile(secret), "secret");
}

TEST_F(ConfinementTest, EmptiesNoFileThatMayOnlyBeReadInAnyVersion) {
    forEachVersion([&](int version) {
        for (const std::string& file : {readable, secret}) {
            EXPECT_EQ(confined(version, [&] { return opening(file, O_RDWR | O_CREAT | O_TRUNC); }),
                      EACCES);
        }
        EXPECT_EQ(confined(version, [&] { return opening(readable, O_RDONLY); }), 0);
    });
    EXPECT_EQ(readFile(readable) + readFile(secret), "readablesecret");
}

TEST_F(ConfinementTest, LetsWhatLiesBelowBeChangedInEveryVersion) {
    forEachVersion([&](int version) {
        EXPECT_EQ(confined(version, [&] { return opening(own, O_RDWR | O_CREAT | O_TRUNC); }), 0);
        EXPECT_EQ(confined(version, [&] { return resultOf(::mkdir((in + "/d").c_str(), 0700)); }),
                  0);
        EXPECT_EQ(confined(version, [&] { return resultOf(::rmdir((in + "/d").c_str())); }), 0);
    });
}

TEST_F(ConfinementTest, NeverLetsAFileBeMovedOrLinkedInOrOut) {
    forEachVersion([&](int version) {
        const auto refused = [&](auto call, const std::string& from, const std::string& to) {
            const int error =
                confined(version, [&] { return resultOf(call(from.c_str(), to.c_str())); });
            EXPECT_TRUE(error == EACCES || error == EXDEV) << from << ' ' << to << ' ' << error;
        };
        refused(::rename, secret, in + "/secret");
        refused(::rename, own, out + "/own");
        refused(::link, secret, in + "/secret");
        refused(::link, readable, in + "/readable");
        refused(::link, own, out + "/own");
    });
}

TEST_F(ConfinementTest, LetsFilesMoveBetweenDirectoriesFromTheSecondVersionOn) {
    scratch.directory("in/other");
    forEachVersion([&](int version) {
        const std::string there = in + "/other/own";
        EXPECT_EQ(
            confined(version, [&] { return resultOf(std::rename(own.c_str(), there.c_str())); }),
            version < 2 ? EXDEV : 0);
        std::rename(there.c_str(), own.c_str());
    });
}

TEST_F(ConfinementTest, KeepsProgramsFromTruncatingFromTheThirdVersionOnAndStartsNoneBefore) {
    forEachVersion([&](int version) {
        EXPECT_EQ(confined(version, [&] { return resultOf(::truncate(secret.c_str(), 6)); }),
                  version < 3 ? 0 : EACCES);
        const auto granting = [&](bool isOwn) {
            return test::thrownBy<Exception>([&] {
                Confinement({{own, Access::Run, isOwn}}, version);
            });
        };
        EXPECT_EQ(granting(false), version < 3
                                       ? "'" + own +
                                             "': this kernel cannot keep a program from truncating "
                                             "files anywhere; Linux 6.2 can"
                                       : nothing);
        EXPECT_EQ(granting(true), nothing);
    });
}

TEST_F(ConfinementTest, KeepsDevicesThatMayOnlyBeReadFromControlFromTheFifthVersionOn) {
    forEachVersion([&](int version) {
        const auto controlling = [version](Access access) {
            return inChild([&] {
                Confinement({{"/dev", access}}, version).enforce();
                termios settings{};
                return resultOf(::tcgetattr(::open("/dev/null", O_RDONLY), &settings));
            });
        };
        EXPECT_EQ(controlling(Access::Read), version < 5 ? ENOTTY : EACCES);
        EXPECT_EQ(controlling(Access::Change), ENOTTY);
    });
}

TEST_F(ConfinementTest, LetsNobodyMakeADevice) {
    const std::string device = in + "/device";
    const auto making = [&device] {
        return resultOf(::mknod(device.c_str(), S_IFCHR | 0600, makedev(1, 3)));
    };
    if (inChild(making) != 0) {
        GTEST_SKIP() << "this user may not make devices anyway";
    }
    ::unlink(device.c_str());
    EXPECT_EQ(confined(Confinement::kernelVersion(), making), EACCES);
}

TEST_F(ConfinementTest, GivesNoListingWithARunOrALook) {
    for (const Access access : {Access::Run, Access::Look}) {
        const auto after = [&](const std::string& path, int flags) {
            return inChild([&] {
                Confinement({{in, access}}).enforce();
                return opening(path, flags);
            });
        };
        EXPECT_EQ(after(own, O_RDONLY), 0);
        EXPECT_EQ(after(own, O_WRONLY), EACCES);
        EXPECT_EQ(after(in, O_RDONLY | O_DIRECTORY), EACCES);
    }
}

TEST_F(ConfinementTest, WinsNoRightsByExecutingAProgram) {
    EXPECT_EQ(confined(1, [] { return ::prctl(PR_GET_NO_NEW_PRIVS, 0, 0, 0, 0); }), 1);
}

TEST_F(ConfinementTest, IsKnownToTheProgram) {
    EXPECT_FALSE(isConfined());
    EXPECT_EQ(confined(1, [] { return isConfined() ? 1 : 0; }), 1);
}

TEST_F(ConfinementTest, RefusesAPathThatIsNotThereUnlessItIsTheProgramsOwn) {
    const auto granting = [](const std::string& path, Access access, bool isOwn) {
        return test::thrownBy<IOException>([&] { Confinement({{path, access, isOwn}}); });
    };
    const std::string missing = scratch / "missing";
    EXPECT_EQ(granting(missing, Access::Change, false),
              "'" + missing + "': No such file or directory (2)");
    EXPECT_EQ(granting(own, Access::Change, false), "'" + own + "': Not a directory (20)");
    EXPECT_EQ(granting(own, Access::Read, false), "'" + own + "': Not a directory (20)");
    EXPECT_EQ(granting(own, Access::Run, false), nothing);
    EXPECT_EQ(granting(missing, Access::Look, true), nothing);
}

TEST(ConfinementOfAKernelWithoutLandlock, IsRefused) {
    EXPECT_EQ(test::thrownBy<Exception>([] {
                  Confinement({{"/", Access::Change}}, 0);
              }),
              "this kernel has no Landlock, or it is switched off");
}

}  // namespace
}  // namespace corvane::platform
