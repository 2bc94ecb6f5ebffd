// The session, the permission and the screen.
#include <cmath>

#include "cvnwinfo/macos/stand_in_fixture.h"
#include "cvnwinfo/window_system.h"

namespace corvane::wintool {
namespace {

using standins::calls;
using standins::world;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

using MacDisplay = OnStandIns;

TEST_F(MacDisplay, HasTheSizeOfTheMainDisplayInPoints) {
    world.mainDisplay = {{0, 0}, {1512, 982}};
    EXPECT_EQ(screenSize(), (Size{1512, 982}));
    EXPECT_THAT(calls, ElementsAre("CGSessionCopyCurrentDictionary()", "CGMainDisplayID()",
                                   "CGDisplayBounds(5)"));
}

TEST_F(MacDisplay, NeedsNoPermissionForItsSize) {
    world.trusted = false;
    EXPECT_EQ(screenSize(), (Size{1440, 900}));
}

TEST_F(MacDisplay, HasNoSizeWhereThereIsNoMainDisplay) {
    world.mainDisplay = {};
    EXPECT_EQ(failure([] { screenSize(); }), "macOS does not tell the size of the main display");
    world.mainDisplay = {{0, 0}, {std::nan(""), 900}};
    EXPECT_EQ(failure([] { screenSize(); }), "macOS does not tell the size of the main display");
}

TEST_F(MacDisplay, NeedsASession) {
    const std::string expected =
        "no session on the screen: nobody is logged in there, or this program runs outside of it";
    world.session = false;
    EXPECT_EQ(failure([] { screenSize(); }), expected);
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), expected);
    EXPECT_EQ(failure([] { placeWindow("Player", Point{1, 2}, std::nullopt); }), expected);
    EXPECT_THAT(calls, testing::Each("CGSessionCopyCurrentDictionary()"));

    world.session = true;
    world.listsWindows = false;
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), expected);
}

TEST_F(MacDisplay, SaysWhereThePermissionIsGivenAndHasTheUserAskedForIt) {
    const std::string expected =
        "no permission to see and move windows: in System Settings > Privacy & Security > "
        "Accessibility add the program that this one is started from, the terminal or, where "
        "launchd starts it, the server 'corvane'";
    world.trusted = false;
    world.windows = {{.title = "Player"}};
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), expected);
    EXPECT_THAT(calls,
                ElementsAre("CGSessionCopyCurrentDictionary()",
                            "AXIsProcessTrustedWithOptions(kAXTrustedCheckOptionPrompt: true)"));
    EXPECT_EQ(failure([] { placeWindow("Player", Point{1, 2}, std::nullopt); }), expected);
    EXPECT_THAT(calls, Not(Contains(StartsWith("AXUIElementSetAttributeValue"))));
}

TEST_F(MacDisplay, SaysWhereThePermissionIsGivenWhenItIsTakenAwayMeanwhile) {
    world.windows = {{.title = "Player", .process = 1}};
    world.applicationErrors[1] = kAXErrorAPIDisabled;
    EXPECT_THAT(failure([] { windowRectangle("Player"); }),
                StartsWith("no permission to see and move windows: "));
}

}  // namespace
}  // namespace corvane::wintool
