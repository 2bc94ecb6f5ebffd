// Finding a window by its title.
#include <algorithm>
#include <limits>
#include <utility>

#include "cvnwinfo/macos/stand_in_fixture.h"
#include "cvnwinfo/window_system.h"

namespace corvane::wintool {
namespace {

using standins::calls;
using standins::world;
using testing::Contains;
using testing::ElementsAre;
using testing::Not;

using MacFinder = OnStandIns;

constexpr AXError refused = AXError{-25200};
constexpr CGRect near = {{10, 20}, {300, 200}};
constexpr CGRect far = {{-1440, -30}, {640.4, 479.6}};
constexpr Rectangle nearFrame = {{10, 20}, {300, 200}};
constexpr Rectangle farFrame = {{-1440, -30}, {640, 480}};

TEST_F(MacFinder, AsksTheWindowServerForTheOrderAndTheApplicationForTitleAndFrame) {
    world.windows = {{.title = "Player", .frame = far, .process = 7}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
    // 17 is the windows on the screen without those of the desktop.
    EXPECT_THAT(calls,
                ElementsAre("CGSessionCopyCurrentDictionary()",
                            "AXIsProcessTrustedWithOptions(kAXTrustedCheckOptionPrompt: true)",
                            "AXUIElementCreateSystemWide()",
                            "AXUIElementSetMessagingTimeout(everything, 1.000000)",
                            "CGWindowListCopyWindowInfo(17, 0)", "AXUIElementCreateApplication(7)",
                            "AXUIElementCopyAttributeValue(application 7, AXWindows)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXTitle)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXPosition)",
                            "AXUIElementCopyAttributeValue(window 'Player', AXSize)"));
}

TEST_F(MacFinder, AsksEveryApplicationOnceAndOnlyWindowsWithSuchATitleForTheirFrame) {
    world.windows = {{.title = "Editor", .frame = near, .process = 7},
                     {.title = "Player", .frame = far, .process = 7}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "AXUIElementCreateApplication(7)"), 1);
    EXPECT_THAT(calls, Not(Contains("AXUIElementCopyAttributeValue(window 'Editor', AXPosition)")));
}

TEST_F(MacFinder, PrefersTheExactTitleToABeginningAboveIt) {
    world.windows = {{.title = "Player - movie", .frame = far, .process = 7},
                     {.title = "Player", .frame = near, .process = 8}};
    EXPECT_EQ(windowRectangle("Player"), nearFrame);
    EXPECT_EQ(windowRectangle("Player -"), farFrame);
}

TEST_F(MacFinder, TakesTheFrontmostOfEqualTitlesWhateverTheOrderOfTheApplication) {
    world.windows = {{.title = "Player", .frame = far, .process = 7},
                     {.title = "Player", .frame = near, .process = 7}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
    std::swap(world.windows[0].frame, world.windows[1].frame);
    EXPECT_EQ(windowRectangle("Player"), nearFrame);
}

TEST_F(MacFinder, TakesTheFrontmostThatBeginsSoOfSeveralApplications) {
    world.windows = {{.title = "Other", .frame = near, .process = 9},
                     {.title = "Player 1", .frame = far, .process = 7},
                     {.title = "Player 2", .frame = near, .process = 8}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
}

TEST_F(MacFinder, AsksOnlyApplicationsWithOrdinaryWindows) {
    world.windows = {{.title = "Player", .process = 9, .layer = 25}};
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), "no window titled 'Player'");
    EXPECT_THAT(calls, Not(Contains("AXUIElementCreateApplication(9)")));
}

TEST_F(MacFinder, AsksTheOtherApplicationsWhenNoWindowOnTheScreenHasTheTitle) {
    world.windows = {{.title = "Editor", .process = 7},
                     {.title = "Player", .frame = far, .process = 8, .onScreen = false}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
    EXPECT_THAT(calls, testing::IsSupersetOf({"CGWindowListCopyWindowInfo(17, 0)",
                                              "CGWindowListCopyWindowInfo(16, 0)"}));
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "AXUIElementCreateApplication(7)"), 1);
}

TEST_F(MacFinder, PutsWindowsThatCannotBeSeenBehindThoseThatCan) {
    world.windows = {{.title = "Player", .frame = far, .process = 7, .onScreen = false},
                     {.title = "Player", .frame = near, .process = 7}};
    EXPECT_EQ(windowRectangle("Player"), nearFrame);
}

TEST_F(MacFinder, NamesTheTitleThatNoWindowHas) {
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), "no window titled 'Player'");
    world.windows = {{.title = "My Player"}, {.title = "player"}};
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), "no window titled 'Player'");
}

TEST_F(MacFinder, NamesTheApplicationThatDoesNotAnswer) {
    world.windows = {{.title = "Player", .process = 7}, {.title = "Editor", .process = 8}};
    world.applicationErrors[7] = kAXErrorCannotComplete;
    EXPECT_EQ(failure([] { windowRectangle("Player"); }),
              "no window titled 'Player', and the application 'App 7' does not answer");
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "AXUIElementCreateApplication(7)"), 1);
}

TEST_F(MacFinder, GoesOnWithoutAnApplicationThatDoesNotAnswer) {
    world.windows = {{.title = "Editor", .process = 8}, {.title = "Player", .frame = far}};
    world.applicationErrors[8] = kAXErrorCannotComplete;
    EXPECT_EQ(windowRectangle("Player"), farFrame);
}

TEST_F(MacFinder, StopsAskingAnApplicationAtTheFirstAnswerThatDoesNotCome) {
    world.windows = {
        {.title = "Player", .process = 7},
        {.title = "Editor", .process = 7, .errors = {{"AXTitle", kAXErrorCannotComplete}}}};
    EXPECT_EQ(failure([] { windowRectangle("Player"); }),
              "no window titled 'Player', and the application 'App 7' does not answer");
    EXPECT_THAT(calls, Not(Contains("AXUIElementCopyAttributeValue(window 'Player', AXTitle)")));
}

TEST_F(MacFinder, GoesOnWithoutAnApplicationThatHasEndedOrHasNoWindowsToTell) {
    for (const AXError error : {kAXErrorInvalidUIElement, refused}) {
        world.windows = {{.title = "Editor", .process = 8}, {.title = "Player", .frame = far}};
        world.applicationErrors[8] = error;
        EXPECT_EQ(windowRectangle("Player"), farFrame);
    }
}

TEST_F(MacFinder, GoesOnWithoutAWindowThatIsGoneOrHasNoPlace) {
    for (const AXError error : {kAXErrorInvalidUIElement, refused}) {
        for (const char* attribute : {"AXTitle", "AXPosition", "AXSize"}) {
            const standins::FakeWindow gone = {
                .title = "Player", .frame = near, .errors = {{attribute, error}}};
            world.windows = {gone, {.title = "Player", .frame = far}, gone};
            EXPECT_EQ(windowRectangle("Player"), farFrame) << attribute;
        }
    }
}

TEST_F(MacFinder, MindsNoValuesOfAnotherKindThanTheyShouldBe) {
    for (const char* attribute : {"AXTitle", "AXPosition", "AXSize"}) {
        world.windows = {{.title = "Player", .frame = near, .oddAttribute = attribute},
                         {.title = "Player", .frame = far}};
        EXPECT_EQ(windowRectangle("Player"), farFrame) << attribute;
    }
}

TEST_F(MacFinder, MindsNoListsOfSomethingElseThanWindows) {
    world.windows = {{.title = "Player"}};
    world.numbersForWindows = true;
    EXPECT_EQ(failure([] { windowRectangle("Player"); }), "no window titled 'Player'");
}

TEST_F(MacFinder, MindsNoWindowsOfWhichTheWindowServerTellsNothing) {
    world.windows = {{.title = "Player", .process = 7, .described = false},
                     {.title = "Player", .frame = far, .process = 8}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
    EXPECT_THAT(calls, Not(Contains("AXUIElementCreateApplication(7)")));
}

TEST_F(MacFinder, MindsNoTitleThatIsNotText) {
    world.windows = {{.title = "Player\xFF", .frame = near}, {.title = "Player", .frame = far}};
    EXPECT_EQ(windowRectangle("Player"), farFrame);
}

TEST_F(MacFinder, KeepsNumbersThatNoScreenHasWithinAMillion) {
    world.windows = {{.title = "Player",
                      .frame = {{-std::numeric_limits<double>::infinity(),
                                 std::numeric_limits<double>::quiet_NaN()},
                                {1e300, 12.5}}}};
    EXPECT_EQ(windowRectangle("Player"), (Rectangle{{-1000000, 0}, {1000000, 13}}));
}

}  // namespace
}  // namespace corvane::wintool
