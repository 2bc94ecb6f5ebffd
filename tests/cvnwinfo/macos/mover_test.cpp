// Moving and resizing a window.
#include <limits>
#include <optional>
#include <vector>

#include "cvnwinfo/macos/stand_in_fixture.h"
#include "cvnwinfo/window_system.h"

namespace corvane::wintool {
namespace {

using standins::calls;
using standins::FakeWindow;
using standins::world;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

constexpr AXError refused = AXError{-25200};
constexpr Point target = {-100, 50};
constexpr Size extent = {640, 480};
constexpr std::optional<Point> samePlace = std::nullopt;
constexpr std::optional<Size> sameSize = std::nullopt;

class MacMover : public OnStandIns {
  protected:
    MacMover() { world.windows = {{.title = "Player", .frame = {{10, 20}, {300, 200}}}}; }

    static FakeWindow& player() { return world.windows.front(); }

    // The calls about the window, without what finding it takes.
    static std::vector<std::string> callsAfterFinding() {
        constexpr int callsToFind = 10;
        return {calls.begin() + callsToFind, calls.end()};
    }

    static void expectAt(const CGRect& frame) {
        EXPECT_EQ(player().frame.origin.x, frame.origin.x);
        EXPECT_EQ(player().frame.origin.y, frame.origin.y);
        EXPECT_EQ(player().frame.size.width, frame.size.width);
        EXPECT_EQ(player().frame.size.height, frame.size.height);
    }

    static void expectUntouched() {
        EXPECT_THAT(calls, Not(Contains(StartsWith("AXUIElementSetAttributeValue"))));
    }
};

TEST_F(MacMover, SetsTheSizeThePositionAndTheSizeAgainAndReadsThemBack) {
    placeWindow("Player", target, extent);
    EXPECT_THAT(callsAfterFinding(),
                ElementsAre("AXUIElementCopyAttributeValue(window 'Player', AXMinimized)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXFullScreen)",
                            "AXUIElementIsAttributeSettable(window 'Player', AXPosition)",
                            "AXUIElementIsAttributeSettable(window 'Player', AXSize)",
                            "AXUIElementSetAttributeValue(window 'Player', AXSize, 640x480)",
                            "AXUIElementSetAttributeValue(window 'Player', AXPosition, -100,50)",
                            "AXUIElementSetAttributeValue(window 'Player', AXSize, 640x480)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXPosition)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXSize)"));
    expectAt({{-100, 50}, {640, 480}});
}

TEST_F(MacMover, SetsOnlyThePositionWhenOnlyThatIsAsked) {
    player().resizable = false;
    placeWindow("Player", target, sameSize);
    EXPECT_THAT(callsAfterFinding(),
                ElementsAre("AXUIElementCopyAttributeValue(window 'Player', AXMinimized)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXFullScreen)",
                            "AXUIElementIsAttributeSettable(window 'Player', AXPosition)",
                            "AXUIElementSetAttributeValue(window 'Player', AXPosition, -100,50)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXPosition)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXSize)"));
    expectAt({{-100, 50}, {300, 200}});
}

TEST_F(MacMover, SetsTheSizeOnceWhenOnlyThatIsAsked) {
    player().movable = false;
    placeWindow("Player", samePlace, extent);
    EXPECT_THAT(callsAfterFinding(),
                ElementsAre("AXUIElementCopyAttributeValue(window 'Player', AXMinimized)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXFullScreen)",
                            "AXUIElementIsAttributeSettable(window 'Player', AXSize)",
                            "AXUIElementSetAttributeValue(window 'Player', AXSize, 640x480)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXPosition)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXSize)"));
    expectAt({{10, 20}, {640, 480}});
}

TEST_F(MacMover, OnlyLooksForTheWindowWhenNothingIsAsked) {
    player().minimised = true;
    placeWindow("Player", samePlace, sameSize);
    EXPECT_THAT(callsAfterFinding(), ElementsAre());
    EXPECT_EQ(failure([] { placeWindow("Browser", samePlace, sameSize); }),
              "no window titled 'Browser'");
}

TEST_F(MacMover, WaitsForAWindowThatFollowsLater) {
    player().delay = 3;
    placeWindow("Player", target, extent);
    expectAt({{-100, 50}, {640, 480}});
}

TEST_F(MacMover, TakesAWindowThatKeepsAnotherSize) {
    player().largest = {500, 400};
    placeWindow("Player", target, extent);
    expectAt({{-100, 50}, {500, 400}});
}

TEST_F(MacMover, GivesUpOnAWindowThatDoesNotFollow) {
    player().delay = std::numeric_limits<int>::max();
    placeWindow("Player", target, extent);
    expectAt({{10, 20}, {300, 200}});
}

TEST_F(MacMover, LeavesAMinimisedWindowAlone) {
    player().minimised = true;
    player().onScreen = false;
    EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }), "the window is minimised");
    expectUntouched();
}

TEST_F(MacMover, LeavesAFullScreenWindowAlone) {
    player().fullScreen = true;
    EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }),
              "the window is in full-screen mode");
    expectUntouched();
}

TEST_F(MacMover, LeavesAWindowAloneThatCannotBeMovedOrResized) {
    player().resizable = false;
    EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }),
              "the window cannot be resized");
    player().movable = false;
    EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }), "the window cannot be moved");
    player().movable = true;
    player().errors["settable AXPosition"] = refused;
    EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }), "the window cannot be moved");
    expectUntouched();
}

TEST_F(MacMover, MovesAWindowThatKnowsNoMinimisingAndNoFullScreenMode) {
    player().errors = {{"AXMinimized", refused}, {"AXFullScreen", refused}};
    placeWindow("Player", target, extent);
    expectAt({{-100, 50}, {640, 480}});
}

TEST_F(MacMover, TellsWhatTheApplicationRefused) {
    for (const char* change : {"set AXSize", "set AXPosition"}) {
        player().errors = {{change, refused}};
        EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }),
                  "the application 'App 1' refused the request (error -25200)")
            << change;
    }
}

TEST_F(MacMover, TellsThatTheApplicationDoesNotAnswerOrTheWindowIsGoneAtEveryStep) {
    for (const char* step : {"AXMinimized", "AXFullScreen", "settable AXPosition",
                             "settable AXSize", "set AXSize", "set AXPosition"}) {
        player().errors = {{step, kAXErrorCannotComplete}};
        EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }),
                  "the application 'App 1' does not answer")
            << step;
        player().errors = {{step, kAXErrorInvalidUIElement}};
        EXPECT_EQ(failure([] { placeWindow("Player", target, extent); }),
                  "the window has disappeared")
            << step;
    }
}

TEST_F(MacMover, TellsThatTheWindowIsGoneWhenItIsReadBack) {
    player().closesWhenMoved = true;
    EXPECT_EQ(failure([] { placeWindow("Player", target, sameSize); }),
              "the window has disappeared");
}

}  // namespace
}  // namespace corvane::wintool
