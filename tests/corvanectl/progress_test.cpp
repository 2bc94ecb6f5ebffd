#include "corvanectl/progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace corvane::ctl {
namespace {

using std::chrono::milliseconds;

class ProgressTest : public testing::Test {
  protected:
    void pass(int ms) { time_ += milliseconds(ms); }

    std::string written() {
        std::string text = out_.str();
        out_.str("");
        return text;
    }

    std::ostringstream out_;
    ProgressLine::Clock::time_point time_;
};

TEST(ByteCount, HasThreeDigitsOrFour) {
    EXPECT_EQ(byteCount(0), "0 B");
    EXPECT_EQ(byteCount(999), "999 B");
    EXPECT_EQ(byteCount(1000), "1.0 kB");
    EXPECT_EQ(byteCount(99'900), "99.9 kB");
    EXPECT_EQ(byteCount(99'960), "100 kB");
    EXPECT_EQ(byteCount(12'345'678), "12.3 MB");
    EXPECT_EQ(byteCount(5e15), "5000 TB");
}

TEST_F(ProgressTest, SaysNothingOfAShortTransfer) {
    {
        ProgressLine line(&out_, [this] { return time_; });
        pass(999);
        line.show(1000);
    }
    EXPECT_EQ(written(), "");
}

TEST_F(ProgressTest, TellsBytesAndRateAndErasesItselfInTheEnd) {
    {
        ProgressLine line(&out_, [this] { return time_; });
        pass(2000);
        line.show(3000);
        EXPECT_EQ(written(), "\r\x1b[K3.0 kB, 1.5 kB/s");
        pass(199);
        line.show(4000);
        EXPECT_EQ(written(), "");
        pass(1);
        line.show(4400, 8800);
        EXPECT_EQ(written(), "\r\x1b[K4.4 kB of 8.8 kB, 2.0 kB/s, 3 s left");
    }
    EXPECT_EQ(written(), "\r\x1b[K");
}

TEST_F(ProgressTest, CountsBothDirectionsOfAConnection) {
    ProgressLine line(&out_, [this] { return time_; });
    pass(1000);
    line.observer()(500, 250);
    EXPECT_EQ(written(), "\r\x1b[K750 B, 750 B/s");
}

TEST(ProgressLine, NeedsATerminal) {
    ProgressLine line(nullptr, [now = ProgressLine::Clock::time_point()]() mutable {
        return now += std::chrono::hours(1);
    });
    line.show(1);
}

}  // namespace
}  // namespace corvane::ctl
