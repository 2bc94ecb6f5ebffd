// What the clients of a server that is confined to folders reach, and what they do not, by whatever
// way: every command that takes a path, against every way out.
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>

#include "e2e/confined_server.h"
#include "support/in_child.h"

namespace corvane::test {
namespace {

namespace fs = std::filesystem;

/// The reply to a "write" that lacks the permission.
const std::string writeRefused = replyText("write", "FAILED", " errno=\"13\"", "");

class ConfinementTest : public ConfinedServerTest {
  protected:
    void SetUp() override {
        ConfinedServerTest::SetUp();
        area.file("in/own", "own");
        area.file("in/tree/file", "file");
        area.directory("in/empty");
        fs::create_directory_symlink(area / "out", area / "in/link");
    }

    /// That no command gets anywhere through `way`, a path in front of what lies in "out", or tells
    /// what is there; every reply is as if nothing were there, and everything stays as it is.
    void expectNoWayOut(const std::string& way) const {
        SCOPED_TRACE(way);
        const Tree outside = treeAt(area / "out");
        const Tree inside = treeAt(area / "in");
        for (const std::string name : {"secret", "sub", "sub/", "none", "sub/none", "none/none"}) {
            expectRefused(way + name, area / "in");
        }
        for (const std::string name : {".", ".."}) {
            EXPECT_TRUE(fails("listDir\n" + way + name)) << name;
            EXPECT_TRUE(fails("copy\n" + way + name + "\n" + (area / "in/empty"))) << name;
        }
        EXPECT_EQ(treeAt(area / "out"), outside);
        EXPECT_EQ(treeAt(area / "in"), inside);
    }

    void expectRefused(const std::string& path, const std::string& in) const {
        EXPECT_EQ(server().request("write\n" + path + "\ntext"), writeRefused) << path;
        for (const std::string& request :
             {"readText\n" + path, "readByte\n" + path + "\n0", "listDir\n" + path,
              "makeDir\n" + path, "delete\n" + path, "copy\n" + path + "\n" + in + "/stolen",
              "copy\n" + path + "\n" + in, "copy\n" + in + "/own\n" + path,
              "copy\n" + in + "/tree\n" + path, "copy\n" + in + "/empty\n" + path,
              "rename\n" + path + "\n" + in + "/stolen", "rename\n" + path + "\n" + in,
              "rename\n" + in + "/own\n" + path, "rename\n" + in + "/tree\n" + path,
              "rename\n" + in + "/empty\n" + path}) {
            EXPECT_TRUE(fails(request)) << request;
        }
    }
};

TEST_F(ConfinementTest, LetsClientsWorkInTheirFolders) {
    startConfined();
    const std::string in = area / "in/";
    EXPECT_EQ(server().request("readText\n" + in + "own"), success("readText", textDetail("own")));
    EXPECT_EQ(server().request("write\n" + in + "new\ntext"), success("write"));
    EXPECT_TRUE(succeeds("makeDir\n" + in + "dir"));
    EXPECT_TRUE(succeeds("makeDir\n" + in + "dir"));  // as ever when it is there already
    EXPECT_TRUE(succeeds("listDir\n" + in));
    EXPECT_TRUE(succeeds("copy\n" + in + "tree\n" + in + "dir"));
    EXPECT_TRUE(succeeds("rename\n" + in + "new\n" + in + "dir/moved"));
    EXPECT_TRUE(succeeds("rename\n" + in + "empty\n" + in + "dir"));
    EXPECT_TRUE(succeeds("copy\n" + (area / "ro/file") + "\n" + in));
    EXPECT_TRUE(succeeds("delete\n" + in + "own"));
    EXPECT_TRUE(succeeds("delete\n" + in + "tree"));
    EXPECT_TRUE(succeeds("delete\n" + in + "tree"));  // as ever when it is gone
    EXPECT_EQ(treeAt(in), (Tree{{"dir", "directory"},
                                {"dir/empty", "directory"},
                                {"dir/file", "file:file"},
                                {"dir/moved", "file:text"},
                                {"file", "file:readable"},
                                {"link", "link:" + (area / "out")}}));
}

TEST_F(ConfinementTest, LeavesNoWayOutByAPath) {
    startConfined();
    expectNoWayOut(area / "out/");
    expectNoWayOut(area / "in/../out/");
    expectNoWayOut(area / "in/link/");
    expectNoWayOut(area / "in/tree/../link/sub/../");
    expectNoWayOut("/proc/self/root" + (area / "out/"));
    expectNoWayOut("/proc/" + std::to_string(server().pid()) + "/root" + (area / "out/"));
}

TEST_F(ConfinementTest, LeavesNoWayOutByTheWorkingDirectory) {
    startConfined({.configuration = "CURRDIR=" + (area / "out") + "\n"});
    expectNoWayOut("");
    expectNoWayOut("./");
    expectNoWayOut("/proc/self/cwd/");
}

TEST_F(ConfinementTest, LeavesNoWayOutByALinkToAFile) {
    fs::create_symlink(area / "out/secret", area / "in/alias");
    fs::create_symlink("../out/none", area / "in/dangling");
    startConfined();
    for (const char* name : {"in/alias", "in/dangling"}) {
        const std::string link = area / name;
        EXPECT_EQ(server().request("write\n" + link + "\ntext"), writeRefused);
        for (const std::string& request :
             {"readText\n" + link, "readByte\n" + link + "\n0", "copy\n" + link + "\n" + link + "2",
              "rename\n" + link + "\n" + link + "2", "copy\n" + (area / "in/own") + "\n" + link,
              "rename\n" + (area / "in/own") + "\n" + link, "makeDir\n" + link}) {
            EXPECT_TRUE(fails(request)) << request;
        }
        EXPECT_TRUE(succeeds("delete\n" + link));  // the link itself
    }
    EXPECT_EQ(textOf("out/secret") + textOf("in/own"), "secretown");
    EXPECT_FALSE(fs::exists(area / "out/none"));
}

TEST_F(ConfinementTest, LeavesNoWayOutByALinkInATree) {
    area.directory("in/source");
    area.directory("in/target");
    fs::create_symlink(area / "out/secret", area / "in/source/alias");
    fs::create_directory_symlink(area / "out", area / "in/target/tree");
    area.directory("in/nested/tree/sub");
    startConfined();
    EXPECT_TRUE(fails("copy\n" + (area / "in/source") + "\n" + (area / "in/empty")));
    EXPECT_TRUE(fails("copy\n" + (area / "in/nested") + "\n" + (area / "in/target")));
    EXPECT_EQ(treeAt(area / "in/empty"), Tree{});
    EXPECT_EQ(treeAt(area / "out"),
              (Tree{{"secret", "file:secret"}, {"sub", "directory"}, {"sub/deep", "file:deep"}}));
}

TEST_F(ConfinementTest, LeavesNoWayOutByAnOpenFileOfTheServers) {
    startConfined();
    const std::string own = "/proc/" + std::to_string(server().pid()) + "/fd";
    for (const auto& entry : fs::directory_iterator(own)) {
        const std::string path = "/proc/self/fd/" + entry.path().filename().string();
        EXPECT_TRUE(fails("readText\n" + path)) << path;
        EXPECT_EQ(server().request("write\n" + path + "\ntext"), writeRefused) << path;
    }
    EXPECT_NE(server().log().find("confined to the folders"), std::string::npos);
}

TEST_F(ConfinementTest, LetsAFolderBeOnlyRead) {
    startConfined();
    const std::string ro = area / "ro/";
    EXPECT_EQ(server().request("readText\n" + ro + "file"),
              success("readText", textDetail("readable")));
    EXPECT_TRUE(succeeds("readByte\n" + ro + "file\n0"));
    EXPECT_TRUE(succeeds("listDir\n" + ro));
    for (const std::string& request :
         {"write\n" + ro + "file\n", "write\n" + ro + "new\n", "makeDir\n" + ro + "new",
          "delete\n" + ro + "file", "delete\n" + ro, "copy\n" + (area / "in/own") + "\n" + ro,
          "copy\n" + (area / "in/own") + "\n" + ro + "file",
          "copy\n" + (area / "in/tree") + "\n" + ro, "rename\n" + ro + "file\n" + (area / "in"),
          "rename\n" + (area / "in/own") + "\n" + ro,
          "rename\n" + (area / "in/empty") + "\n" + ro}) {
        EXPECT_TRUE(fails(request)) << request;
    }
    EXPECT_EQ(treeAt(ro), (Tree{{"file", "file:readable"}}));
    EXPECT_EQ(textOf("in/own"), "own");
}

TEST_F(ConfinementTest, LetsNoFolderItselfBeDeletedOrEmptiedThereby) {
    startConfined();
    EXPECT_TRUE(fails("delete\n" + (area / "in")));
    EXPECT_TRUE(fails("delete\n" + (area / "in/")));
    EXPECT_EQ(textOf("in/own"), "own");
}

TEST_F(ConfinementTest, CountsAnotherNameOfAFileByWhereThatLies) {
    fs::create_hard_link(area / "out/secret", area / "in/hard");
    fs::create_hard_link(area / "in/own", area / "out/hard");
    startConfined();
    EXPECT_EQ(server().request("readText\n" + (area / "in/hard")),
              success("readText", textDetail("secret")));
    EXPECT_TRUE(fails("readText\n" + (area / "out/hard")));
    // Both are the same file: nothing would be done, but nothing may be told.
    EXPECT_TRUE(fails("rename\n" + (area / "in/own") + "\n" + (area / "out/hard")));
    EXPECT_TRUE(fails("copy\n" + (area / "in/own") + "\n" + (area / "out/hard")));
}

class MountTest : public ConfinementTest {
  protected:
    /// Has `shown` appear as `place` for this process only. False when that is not allowed.
    static bool bind(const std::string& shown, const std::string& place) {
        return ::unshare(CLONE_NEWNS) == 0 &&
               ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               ::mount(shown.c_str(), place.c_str(), nullptr, MS_BIND, nullptr) == 0;
    }
    /// Starts a server for which `shown` is mounted at `place`; skips where that is not allowed.
    void startWithMount(const std::string& shown, const std::string& place) {
        if (inChild([&] { return bind(shown, place) ? 0 : 1; }) != 0) {
            GTEST_SKIP() << "this user may not mount";
        }
        startConfined({.prepare = [&] { bind(shown, place); }});
    }
};

TEST_F(MountTest, IsNoWayOutFromOutside) {
    startWithMount(area / "in/tree", area / "out/sub");
    if (!IsSkipped()) {
        EXPECT_TRUE(fails("readText\n" + (area / "out/sub/file")));
        EXPECT_EQ(server().request("write\n" + (area / "out/sub/file") + "\ntext"), writeRefused);
    }
}

TEST_F(MountTest, CountsByThePlaceWhereItIsMounted) {
    startWithMount(area / "out/sub", area / "in/empty");
    if (!IsSkipped()) {
        EXPECT_EQ(server().request("readText\n" + (area / "in/empty/deep")),
                  success("readText", textDetail("deep")));
        EXPECT_TRUE(fails("readText\n" + (area / "in/empty/../../out/sub/deep")));
    }
}

}  // namespace
}  // namespace corvane::test
