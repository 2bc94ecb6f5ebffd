// Lines of clients under categories that they name themselves.
#include "log/external_log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <log4cpp/Category.hh>

#include "support/log_capture.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

std::size_t categories() {
    std::vector<log4cpp::Category*>* all = log4cpp::Category::getCurrentCategories();
    const std::size_t count = all->size();
    delete all;
    return count;
}

TEST(ExternalLog, MakesNoCategoryForALineOfNoPriority) {
    const std::size_t before = categories();
    EXPECT_THROW(writeExternalLine("unused", "LOUD", "text"), Exception);
    EXPECT_EQ(categories(), before);
}

// Each category stays for the life of the process, so that this one fills the room for all.
TEST(ExternalLog, MakesABoundedNumberOfCategoriesAlsoForNamesWithDots) {
    const test::LogCapture log;
    const std::size_t before = categories();
    writeExternalLine("game", "", "text");
    EXPECT_EQ(log.lines().back(), "INFO ext.log.game text");
    for (int i = 0; i < 2'000; ++i) {
        writeExternalLine(format("a%d.b.c.d.e.f.g.h.i.j", i), "", "text");
    }
    EXPECT_EQ(log.lines().back(), "INFO ext.log text");
    EXPECT_LE(categories() - before, 10'002U);
    EXPECT_GT(categories() - before, 9'980U);
    writeExternalLine("game", "ERROR", "still known");
    EXPECT_EQ(log.lines().back(), "ERROR ext.log.game still known");
}

}  // namespace
}  // namespace corvane
