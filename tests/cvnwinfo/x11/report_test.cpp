#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

#include "cvnwinfo/x11/tool_fixture.h"

namespace corvane::x11test {
namespace {

// Every test runs once under openbox and once without a window manager.
class Report : public testing::TestWithParam<X11Session::Manager> {
  protected:
    X11Session session{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Session, Report, bothSessions, testing::PrintToStringParamName());

TEST_P(Report, AgreesWithXwininfo) {
    const TestWindow window(session, {.wmName = "Adobe Flash Player"});
    const PixelRectangle reported = reportedRectangle(session, "Adobe Flash Player");
    EXPECT_EQ(reported, rectangleByXwininfo(session, window.id()));
    EXPECT_EQ(reported.width, 320);
    EXPECT_EQ(reported.height, 240);
}

TEST_P(Report, GivesTheSizeOfTheScreen) {
    const Outcome outcome = runTool(session.environment(), {"-a"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output, "1024,768\n");
    EXPECT_EQ(outcome.errors, "");
}

TEST_P(Report, FindsAWindowByItsNetWmName) {
    const TestWindow window(session,
                            {.netWmName = "Lecteur n\xC2\xB0 1 \xE2\x80\x94 \xE5\xBD\xB1"});
    EXPECT_EQ(reportedRectangle(session, "Lecteur n\xC2\xB0 1 \xE2\x80\x94 \xE5\xBD\xB1"),
              window.rectangle());
}

TEST_P(Report, FindsAWindowByItsLatin1WmName) {
    const TestWindow window(session, {.wmName = "Lecteur n\xB0 1"});
    EXPECT_EQ(reportedRectangle(session, "Lecteur n\xC2\xB0 1"), window.rectangle());
}

TEST_P(Report, FindsAWindowByItsWmNameInUtf8) {
    const TestWindow window(session,
                            {.wmName = "Lecteur n\xC2\xB0 1", .wmNameType = "UTF8_STRING"});
    EXPECT_EQ(reportedRectangle(session, "Lecteur n\xC2\xB0 1"), window.rectangle());
}

TEST_P(Report, PrefersNetWmNameToWmName) {
    const TestWindow window(session, {.wmName = "Old name", .netWmName = "New name"});
    EXPECT_EQ(reportedRectangle(session, "New name"), window.rectangle());
    EXPECT_THROW(reportedRectangle(session, "Old name"), std::runtime_error);
}

TEST_P(Report, PrefersTheExactTitleToABeginningAboveIt) {
    const TestWindow exact(session, {.wmName = "Player", .rectangle = {10, 10, 300, 200}});
    const TestWindow longer(session, {.wmName = "Player - movie", .rectangle = {40, 40, 200, 100}});
    longer.raise();
    EXPECT_EQ(reportedRectangle(session, "Player"), exact.rectangle());
    EXPECT_EQ(reportedRectangle(session, "Player -"), longer.rectangle());
}

TEST_P(Report, TakesTheTopmostWindowThatBeginsSo) {
    const TestWindow first(session, {.wmName = "Player 1", .rectangle = {10, 10, 300, 200}});
    const TestWindow second(session, {.netWmName = "Player 2", .rectangle = {40, 40, 200, 100}});
    first.raise();
    EXPECT_EQ(reportedRectangle(session, "Player"), first.rectangle());
    second.raise();
    EXPECT_EQ(reportedRectangle(session, "Player"), second.rectangle());
}

TEST_P(Report, IgnoresWindowsThatAreNotShown) {
    const TestWindow hidden(session, {.wmName = "Helper", .mapped = false});
    EXPECT_THROW(reportedRectangle(session, "Helper"), std::runtime_error);
}

TEST_P(Report, NamesTheTitleThatNoWindowHas) {
    const TestWindow window(session, {.wmName = "Player"});
    const Outcome outcome = runTool(session.environment(), {"-g", "-n", "Browser"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "cvnwinfo: no window titled 'Browser'\n");
    EXPECT_EQ(outcome.output, "");
}

TEST_P(Report, WorksWithClosedDescriptors) {
    const TestWindow window(session, {.wmName = "Player"});
    const Outcome blind = runProgram(
        {"sh", "-c", "exec \"$0\" -g -n Player <&- 2>&-", CVNWINFO_PROGRAM}, session.environment());
    EXPECT_EQ(blind.status, 0);
    EXPECT_NE(blind.output, "");
    const Outcome mute = runProgram({"sh", "-c", "exec \"$0\" -g -n Player >&-", CVNWINFO_PROGRAM},
                                    session.environment());
    EXPECT_EQ(mute.status, 1);
    EXPECT_EQ(mute.errors, "cvnwinfo: cannot write to standard output\n");
}

TEST(ReportAfterManager, IsNotMisledByWhatADeadWindowManagerLeft) {
    X11Session session;
    const TestWindow early(session, {.wmName = "Early"});
    session.killManager();
    const TestWindow late(session, {.wmName = "Late"});
    EXPECT_EQ(reportedRectangle(session, "Early"), early.rectangle());
    EXPECT_EQ(reportedRectangle(session, "Late"), late.rectangle());
}

// A window manager that takes over unmapped windows marks them; helper windows have no mark.
TEST(ReportWithoutManager, FindsAMinimisedWindow) {
    const X11Session session(X11Session::Manager::none);
    const TestWindow window(session, {.wmName = "Minimised", .mapped = false});
    EXPECT_THROW(reportedRectangle(session, "Minimised"), std::runtime_error);
    const X11Connection manager(session.display());
    constexpr std::array<std::uint32_t, 2> iconic = {3, XCB_NONE};
    const xcb_atom_t state = manager.atom("WM_STATE");
    xcb_change_property(manager.get(), XCB_PROP_MODE_REPLACE, window.id(), state, state, 32,
                        iconic.size(), iconic.data());
    ASSERT_EQ(manager.property(window.id(), "WM_STATE").size(), iconic.size());
    EXPECT_EQ(reportedRectangle(session, "Minimised"), window.rectangle());
}

// What a window manager announces that tells the age of its windows, but not how they are stacked.
class SimpleManager {
  public:
    SimpleManager(const X11Session& session, const std::vector<xcb_window_t>& windows)
        : connection_(session.display()) {
        const xcb_window_t root = connection_.screen()->root;
        const xcb_window_t check = xcb_generate_id(connection_.get());
        xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, check, root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        set(root, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
        set(check, "_NET_SUPPORTING_WM_CHECK", "WINDOW", {check});
        set(root, "_NET_SUPPORTED", "ATOM", {connection_.atom("_NET_CLIENT_LIST")});
        set(root, "_NET_CLIENT_LIST", "WINDOW", windows);
    }

  private:
    void set(xcb_window_t window, const char* name, const char* type,
             const std::vector<std::uint32_t>& items) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window,
                            connection_.atom(name), connection_.atom(type), 32,
                            static_cast<std::uint32_t>(items.size()), items.data());
        EXPECT_EQ(connection_.property(window, name), items);
    }

    X11Connection connection_;
};

TEST(ReportWithoutManager, TakesTheYoungestOfTheWindowsThatAreListedByTheirAge) {
    const X11Session session(X11Session::Manager::none);
    const TestWindow old(session, {.wmName = "Player 1", .rectangle = {10, 10, 300, 200}});
    const TestWindow young(session, {.wmName = "Player 2", .rectangle = {40, 40, 200, 100}});
    old.raise();
    EXPECT_EQ(reportedRectangle(session, "Player"), old.rectangle());
    const SimpleManager manager(session, {old.id(), young.id()});
    EXPECT_EQ(reportedRectangle(session, "Player"), young.rectangle());
}

TEST(ReportWithoutManager, IsAboutTheScreenThatDisplayNames) {
    const X11Session session(X11Session::Manager::none);
    Environment second = session.environment();
    second.set("DISPLAY", session.display() + ".1");
    EXPECT_EQ(runTool(second, {"-a"}).output, "800,600\n");
    EXPECT_EQ(runTool(session.environment(), {"-a"}).output, "1024,768\n");
}

TEST(ReportWithoutManager, LeavesOutTheBorder) {
    const X11Session session(X11Session::Manager::none);
    const TestWindow window(session, {.wmName = "T", .rectangle = {50, 60, 200, 100}, .border = 7});
    EXPECT_EQ(reportedRectangle(session, "T"), (PixelRectangle{57, 67, 200, 100}));
}

}  // namespace
}  // namespace corvane::x11test
