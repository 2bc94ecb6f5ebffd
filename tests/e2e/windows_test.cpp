// The window commands with everything real: the server, the window tool beside it, an X server with
// a window manager, and the player's window.
#include <stdlib.h>

#include "e2e/server_test.h"
#include "platform/confinement.h"
#include "support/environment.h"
#include "support/scratch_directory.h"
#include "support/x11_session.h"
#include "support/x11_window.h"

namespace corvane::test {
namespace {

using x11test::PixelRectangle;
using x11test::rectangleByXwininfo;
using x11test::TestWindow;
using x11test::X11Session;

std::string numberDetail(const std::string& id, int value) {
    return detail(id, std::to_string(value));
}

std::string rectangleReply(const std::string& command, const PixelRectangle& rectangle) {
    return success(command, numberDetail("x", rectangle.x) + numberDetail("y", rectangle.y) +
                                numberDetail("width", rectangle.width) +
                                numberDetail("height", rectangle.height));
}

class WindowsTest : public ServerTest {
  protected:
    WindowsTest() : display_("DISPLAY", session_.display()) {
        startWith({.files = {{"cvnwinfo", readFile(CVNWINFO_EXECUTABLE)}}});
    }

    const X11Session& session() const { return session_; }

  private:
    X11Session session_;
    EnvironmentVariable display_;
};

TEST_F(WindowsTest, GetTheRectangleOfTheWindowWithATitle) {
    const TestWindow window(session(), {.wmName = "Adobe Flash Player"});
    EXPECT_EQ(server().request("getWndRect\nAdobe Flash Player"),
              rectangleReply("getWndRect", rectangleByXwininfo(session(), window.id())));
}

TEST_F(WindowsTest, FailToFindAWindowThatIsNotThere) {
    EXPECT_EQ(server().request("getWndRect\n"), failure("getWndRect"));
}

TEST_F(WindowsTest, GetTheRectangleOfTheScreen) {
    EXPECT_EQ(
        server().request("getScreenRect"),
        rectangleReply("getScreenRect", {0, 0, X11Session::screenWidth, X11Session::screenHeight}));
}

TEST_F(WindowsTest, MoveAndResizeThePlayerByItsOtherTitle) {
    const TestWindow window(session(), {.wmName = "Adobe Flash Player"});
    const PixelRectangle wanted{150, 120, 400, 300};
    EXPECT_EQ(server().request("setWndPos\n3\n150\n120\n400\n300\n"), success("setWndPos"));
    EXPECT_TRUE(window.waitForRectangle(wanted));
    EXPECT_EQ(rectangleByXwininfo(session(), window.id()), wanted);
    EXPECT_EQ(server().request("getWndRect\nAdobe Flash Player"),
              rectangleReply("getWndRect", wanted));
}

TEST_F(WindowsTest, MoveWithoutAChangeOfSize) {
    const TestWindow window(session(), {.wmName = "Kiosk", .netWmName = "Kiosk"});
    PixelRectangle wanted = window.rectangle();
    wanted.x = 33;
    wanted.y = 44;
    EXPECT_EQ(server().request("setWndPos\n1\n33\n44\nKiosk"), success("setWndPos"));
    EXPECT_TRUE(window.waitForRectangle(wanted));
}

TEST_F(WindowsTest, AreReachedByAServerThatIsConfinedToo) {
    if (platform::Confinement::kernelVersion() == 0) {
        GTEST_SKIP() << "the kernel has no Landlock, or it is switched off";
    }
    if (CORVANE_SANITIZED) {
        GTEST_SKIP() << "the search for leaks in the tool reads /proc, which is out of its reach";
    }
    const ScratchDirectory folder;
    startWith({.configuration = "FOLDERS=" + folder.path() + "\n",
               .files = {{"cvnwinfo", readFile(CVNWINFO_EXECUTABLE)}}});
    ASSERT_TRUE(server().waitForLog("confined to"));
    server().recountDescriptors();
    const TestWindow window(session(), {.wmName = "Adobe Flash Player"});
    EXPECT_EQ(server().request("getWndRect\nAdobe Flash Player"),
              rectangleReply("getWndRect", rectangleByXwininfo(session(), window.id())));
}

}  // namespace
}  // namespace corvane::test
