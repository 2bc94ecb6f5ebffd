#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <thread>

#include "cvnwinfo/x11/tool_fixture.h"

namespace corvane::x11test {
namespace {

// Every test runs once under openbox and once without a window manager.
class Move : public testing::TestWithParam<X11Session::Manager> {
  protected:
    void move(const std::vector<std::string>& options) {
        std::vector<std::string> arguments = {"-n", "Player"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const Outcome outcome = runTool(session.environment(), arguments);
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "");
    }

    // The client area lies there for the X server, for xwininfo and for the tool itself.
    void expectAt(const PixelRectangle& expected) {
        EXPECT_TRUE(window.waitForRectangle(expected)) << window.rectangle();
        EXPECT_EQ(rectangleByXwininfo(session, window.id()), expected);
        EXPECT_EQ(reportedRectangle(session, "Player"), expected);
    }

    X11Session session{GetParam()};
    TestWindow window{session, {.wmName = "Player"}};
};

INSTANTIATE_TEST_SUITE_P(Session, Move, bothSessions, testing::PrintToStringParamName());

TEST_P(Move, PutsTheClientAreaAtAPosition) {
    move({"-p", "200,150"});
    expectAt({200, 150, 320, 240});
}

TEST_P(Move, KeepsThePositionWhenOnlyTheSizeChanges) {
    move({"-p", "200,150"});
    expectAt({200, 150, 320, 240});
    move({"-s", "400,300"});
    expectAt({200, 150, 400, 300});
}

TEST_P(Move, SetsPositionAndSizeAtOnce) {
    move({"-p", "123,234", "-s", "456,345"});
    expectAt({123, 234, 456, 345});
}

TEST_P(Move, GoesBeyondTheUpperLeftCorner) {
    move({"-p", "-30,-20"});
    expectAt({-30, -20, 320, 240});
}

TEST_P(Move, MayAskForWhatIsAlreadySo) {
    move({"-p", "200,150", "-s", "320,240"});
    expectAt({200, 150, 320, 240});
    move({"-p", "200,150", "-s", "320,240"});
    expectAt({200, 150, 320, 240});
}

TEST_P(Move, DoesNothingWhenNothingIsAsked) {
    const PixelRectangle before = window.rectangle();
    move({});
    expectAt(before);
}

TEST_P(Move, NamesTheTitleThatNoWindowHas) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{"-n", "Browser"}, {"-n", "Browser", "-p", "1,2"}}) {
        const Outcome outcome = runTool(session.environment(), arguments);
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.errors, "cvnwinfo: no window titled 'Browser'\n");
    }
}

// A window manager with a will of its own: it grants nothing, and changes the window's size each
// 50 ms.
class RestlessManager {
  public:
    RestlessManager(const X11Session& session, xcb_window_t window)
        : connection_(session.display()), window_(window) {
        constexpr std::array<std::uint32_t, 1> events = {XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT};
        xcb_change_window_attributes(connection_.get(), connection_.screen()->root,
                                     XCB_CW_EVENT_MASK, events.data());
        static_cast<void>(connection_.atom("WM_STATE"));  // a round trip: it is in force now
        thread_ = std::thread([this] { resize(); });
    }
    ~RestlessManager() {
        over_ = true;
        thread_.join();
    }
    RestlessManager(const RestlessManager&) = delete;
    RestlessManager& operator=(const RestlessManager&) = delete;
    RestlessManager(RestlessManager&&) = delete;
    RestlessManager& operator=(RestlessManager&&) = delete;

  private:
    void resize() {
        for (std::uint32_t width = 330; !over_; ++width) {
            xcb_configure_window(connection_.get(), window_, XCB_CONFIG_WINDOW_WIDTH, &width);
            xcb_flush(connection_.get());
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        }
    }

    X11Connection connection_;
    xcb_window_t window_;
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

TEST(MoveWithoutManager, DoesNotWaitForAWindowThatKeepsChanging) {
    const X11Session session(X11Session::Manager::none);
    const TestWindow window(session, {.wmName = "T"});
    const RestlessManager manager(session, window.id());
    const Outcome outcome = runTool(session.environment(), {"-n", "T", "-p", "80,90"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_NE(window.rectangle().x, 80);
}

TEST(MoveWithoutManager, AllowsForTheBorder) {
    const X11Session session(X11Session::Manager::none);
    const TestWindow window(session, {.wmName = "T", .border = 7});
    EXPECT_EQ(runTool(session.environment(), {"-n", "T", "-p", "80,90"}).status, 0);
    EXPECT_EQ(window.rectangle(), (PixelRectangle{80, 90, 320, 240}));
}

TEST(MoveWithoutManager, AllowsForTheBorderWhateverTheGravity) {
    constexpr std::size_t gravityAt = 17;          // in the property WM_NORMAL_HINTS
    constexpr std::uint32_t hasGravity = 1U << 9;  // its flag PWinGravity
    const X11Session session(X11Session::Manager::none);
    const TestWindow window(session, {.wmName = "T", .border = 7});
    const X11Connection connection(session.display());
    std::array<std::uint32_t, gravityAt + 1> hints{hasGravity};
    for (const xcb_gravity_t gravity :
         {XCB_GRAVITY_CENTER, XCB_GRAVITY_SOUTH_EAST, XCB_GRAVITY_STATIC}) {
        hints[gravityAt] = gravity;
        xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window.id(),
                            XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS, 32, hints.size(),
                            hints.data());
        static_cast<void>(connection.atom("WM_STATE"));  // a round trip: it is in force now
        const std::string x = std::to_string(80 + gravity);
        EXPECT_EQ(runTool(session.environment(), {"-n", "T", "-p", x + ",90"}).status, 0);
        EXPECT_EQ(window.rectangle(), (PixelRectangle{80 + gravity, 90, 320, 240})) << gravity;
    }
}

}  // namespace
}  // namespace corvane::x11test
