// A server that cannot be confined as it is asked to does not serve.
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "e2e/confined_server.h"

namespace corvane::test {
namespace {

constexpr int startFailed = 255;

/// Makes one system call fail from now on, in this process and what it becomes: what a kernel does
/// that does not know it.
void withoutCall(unsigned number, unsigned error) {
    std::array<sock_filter, 4> steps{
        {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, number, 0, 1),
         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    const sock_fprog filter{static_cast<unsigned short>(steps.size()), steps.data()};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter);
}

class ConfinementStartTest : public ConfinedServerTest {
  protected:
    /// That a start with this value of FOLDERS fails before it serves, and tells why.
    void expectRefusal(const std::string& folders, const std::string& reason) {
        ServerProcess& refused = start("FOLDERS=" + folders + "\n");
        EXPECT_EQ(refused.wait(), startFailed) << folders;
        EXPECT_EQ(
            refused.output(),
            "Initializing app\ncorvane init error:\nFOLDERS is not possible: " + reason + "\n");
        EXPECT_EQ(refused.log().find("Listening"), std::string::npos);
    }
    static std::string noPath(const std::string& entry) {
        return "'" + entry + "' is no full path; only ro= and x= may stand in front of one";
    }
};

TEST_F(ConfinementStartTest, RefusesWhatIsNoFullPath) {
    expectRefusal("srv/kiosk", noPath("srv/kiosk"));
    expectRefusal("rw=/tmp", noPath("rw=/tmp"));
    expectRefusal("RO=/tmp", noPath("RO=/tmp"));
    expectRefusal("ro=", noPath("ro="));
    expectRefusal("/tmp:ro=tmp", noPath("ro=tmp"));
    expectRefusal("/tmp::/usr", noPath(""));
    expectRefusal("/tmp:", noPath(""));
}

TEST_F(ConfinementStartTest, RefusesWhatIsNotThereOrNoFolder) {
    const std::string missing = area / "missing";
    for (const char* prefix : {"", "ro=", "x="}) {
        expectRefusal(prefix + missing, "'" + missing + "': No such file or directory (2)");
    }
    const std::string file = area / "ro/file";
    for (const char* prefix : {"", "ro="}) {
        expectRefusal(prefix + file, "'" + file + "': Not a directory (20)");
    }
}

TEST_F(ConfinementStartTest, FailsOnAKernelThatCannotConfine) {
    ServerProcess& refused =
        startConfined({.prepare = [] { withoutCall(SYS_landlock_create_ruleset, ENOSYS); }});
    EXPECT_EQ(refused.wait(), startFailed);
    EXPECT_EQ(refused.output(),
              "Initializing app\ncorvane init error:\nFOLDERS is not possible: this kernel has no "
              "Landlock, or it is switched off\n");
    EXPECT_EQ(refused.log().find("Listening"), std::string::npos);
}

TEST_F(ConfinementStartTest, ServesNobodyWhenTheKernelRefusesInTheEnd) {
    ServerProcess& refused =
        startConfined({.prepare = [] { withoutCall(SYS_landlock_restrict_self, EPERM); }});
    EXPECT_EQ(refused.wait(), 0);
    EXPECT_TRUE(
        refused.hasLogged("ERROR corvane Server exception: landlock_restrict_self() fail (1)"));
    EXPECT_EQ(refused.log().find("Process loop start"), std::string::npos);
}

TEST_F(ConfinementStartTest, ConfinesNothingWithoutFolders) {
    for (const char* configuration : {"", "FOLDERS=\n"}) {
        start(configuration);
        EXPECT_EQ(server().request("readText\n" + (area / "out/secret")),
                  success("readText", textDetail("secret")));
    }
}

TEST_F(ConfinementStartTest, ConfinesADetachedServerAsWell) {
    startConfined({.configuration = "CONSOLE=false\n"});
    ASSERT_TRUE(server().waitForLog("confined to"));
    server().followDetached();
    EXPECT_TRUE(fails("readText\n" + (area / "out/secret")));
    EXPECT_TRUE(succeeds("readText\n" + (area / "ro/file")));
}

}  // namespace
}  // namespace corvane::test
