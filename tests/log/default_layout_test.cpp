#include "log/default_layout.h"

#include <gtest/gtest.h>
#include <time.h>

#include <log4cpp/LoggingEvent.hh>
#include <log4cpp/PatternLayout.hh>
#include <log4cpp/Priority.hh>
#include <string>
#include <vector>

#include "support/environment.h"

namespace corvane {
namespace {

TEST(DefaultLayout, WritesTheSameBytesAsThePatternLayout) {
    log4cpp::PatternLayout reference;
    reference.setConversionPattern(defaultPattern);
    DefaultLayout layout;
    for (const int priority : {-1, 0, 100, 200, 300, 400, 500, 550, 600, 700, 800, 900}) {
        for (const std::string message : {"", "plain", "100% %s\nsecond line", "\x01\xFF"}) {
            const log4cpp::LoggingEvent event("corvane.server", message, "", priority);
            EXPECT_EQ(layout.format(event), reference.format(event));
        }
    }
}

TEST(DefaultLayout, WritesEveryMillisecondAndSecondLikeThePatternLayout) {
    log4cpp::PatternLayout reference;
    reference.setConversionPattern(defaultPattern);
    DefaultLayout layout;
    log4cpp::LoggingEvent event("a", "b", "", log4cpp::Priority::INFO);
    for (const unsigned second : {0U, 1U, 951782399U, 951782400U, 1711846800U, 2147483647U, 1U}) {
        for (unsigned millisecond = 0; millisecond < 1000; millisecond += 37) {
            event.timeStamp = log4cpp::TimeStamp(second, millisecond * 1000 + 999);
            ASSERT_EQ(layout.format(event), reference.format(event));
        }
    }
}

TEST(DefaultLayout, ShowsTheTimeOfTheUsersPlace) {
    log4cpp::LoggingEvent event("a", "b", "", log4cpp::Priority::INFO);
    event.timeStamp = log4cpp::TimeStamp(951'782'399U, 7'000);
    std::string line;
    {
        const test::EnvironmentVariable east("TZ", "EAST-05:30");
        ::tzset();
        line = DefaultLayout().format(event);
    }
    ::tzset();
    EXPECT_EQ(line, "2000-02-29 05:29:59,007 [INFO,a] b\n");
}

}  // namespace
}  // namespace corvane
