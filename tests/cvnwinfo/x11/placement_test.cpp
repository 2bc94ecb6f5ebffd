#include "cvnwinfo/x11/placement.h"

#include <gtest/gtest.h>
#include <xcb/xproto.h>

namespace corvane::wintool {
namespace {

// A frame of 4 pixels at the left, 6 at the right, 20 at the top and 8 at the bottom.
constexpr FrameExtents frame = {.left = 4, .right = 6, .top = 20, .bottom = 8};

TEST(ExtentsAround, AreTheDistancesOnEachSide) {
    const FrameExtents extents = extentsAround({{10, 10}, {110, 128}}, {{14, 30}, {100, 100}});
    EXPECT_EQ(extents.left, frame.left);
    EXPECT_EQ(extents.right, frame.right);
    EXPECT_EQ(extents.top, frame.top);
    EXPECT_EQ(extents.bottom, frame.bottom);
}

TEST(RequestedOrigin, IsTheFramesCornerForNorthWestGravity) {
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_NORTH_WEST), (Point{96, 180}));
}

TEST(RequestedOrigin, IsTheFramesCornerForAGravityThatDoesNotExist) {
    for (const std::uint32_t gravity : {0U, XCB_GRAVITY_STATIC + 1U, 0xFFFFFFFFU}) {
        EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, gravity), (Point{96, 180})) << gravity;
    }
}

TEST(RequestedOrigin, KeepsTheFarCornerForSouthEastGravity) {
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_SOUTH_EAST), (Point{106, 208}));
}

TEST(RequestedOrigin, KeepsTheMiddleForCenterGravity) {
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_CENTER), (Point{101, 194}));
}

TEST(RequestedOrigin, TreatsTheAxesApart) {
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_NORTH), (Point{101, 180}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_NORTH_EAST), (Point{106, 180}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_WEST), (Point{96, 194}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_EAST), (Point{106, 194}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_SOUTH_WEST), (Point{96, 208}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_SOUTH), (Point{101, 208}));
}

TEST(RequestedOrigin, IsTheClientsCornerForStaticGravity) {
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 0, XCB_GRAVITY_STATIC), (Point{100, 200}));
    EXPECT_EQ(requestedOrigin({100, 200}, frame, 3, XCB_GRAVITY_STATIC), (Point{97, 197}));
}

TEST(RequestedOrigin, AllowsOnlyForTheBorderOfAWindowWithoutFrame) {
    constexpr FrameExtents border = {.left = 5, .right = 5, .top = 5, .bottom = 5};
    for (std::uint32_t gravity = 0; gravity <= XCB_GRAVITY_STATIC; ++gravity) {
        EXPECT_EQ(requestedOrigin({-7, 9}, border, 5, gravity), (Point{-12, 4})) << gravity;
    }
}

}  // namespace
}  // namespace corvane::wintool
