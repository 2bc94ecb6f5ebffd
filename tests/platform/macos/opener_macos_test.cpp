#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/macos/framework_stand_ins.h"
#include "platform/opener.h"
#include "text/exception.h"

namespace corvane {
namespace {

using testing::ElementsAre;

// Statuses of Launch Services and the File Manager, as a Mac reports them.
constexpr OSStatus noApplicationFound = -10814;
constexpr OSStatus fileNotFound = -43;

class OpenAddress : public testing::Test {
  protected:
    OpenAddress() { standins::reset(); }
};

using OpenDocument = OpenAddress;

TEST_F(OpenAddress, HandsAUrlOfTheTextToLaunchServicesAndReleasesIt) {
    openAddress("http://server/page");

    // 134217984 is 0x08000100, the number of UTF-8.
    EXPECT_THAT(standins::calls,
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, 'http://server/page', 18, "
                            "134217984, null)",
                            "LSOpenCFURLRef(url, null)", "CFRelease(url)"));
}

TEST_F(OpenAddress, CountsBytesNotCharacters) {
    openAddress("C:/Caf\xC3\xA9.txt");

    ASSERT_FALSE(standins::calls.empty());
    EXPECT_EQ(standins::calls.front(),
              "CFURLCreateWithBytes(kCFAllocatorDefault, 'C:/Caf\xC3\xA9.txt', 12, 134217984, "
              "null)");
}

TEST_F(OpenAddress, RefusesATextThatIsNoUrlAndReleasesNothing) {
    standins::answers.urlIsValid = false;

    try {
        openAddress("http:/ /%");
        FAIL() << "nothing thrown";
    } catch (const IOException& e) {
        FAIL() << "a text that is no URL has no status, but got " << e.what();
    } catch (const Exception& e) {
        EXPECT_STREQ(e.what(), "Cannot create CFURLRef for 'http:/ /%'");
    }
    EXPECT_THAT(standins::calls,
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, 'http:/ /%', 9, 134217984, "
                            "null)"));
}

TEST_F(OpenAddress, ReportsTheStatusOfLaunchServicesAfterReleasingTheUrl) {
    standins::answers.openUrlStatus = noApplicationFound;

    try {
        openAddress("odd://x");
        FAIL() << "nothing thrown";
    } catch (const IOException& e) {
        EXPECT_EQ(e.code, noApplicationFound);
        EXPECT_STREQ(e.what(), "LSOpenCFURLRef error for file 'odd://x' (-10814)");
    }
    EXPECT_THAT(standins::calls,
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, 'odd://x', 7, 134217984, "
                            "null)",
                            "LSOpenCFURLRef(url, null)", "CFRelease(url)"));
}

TEST_F(OpenAddress, TakesAPositiveStatusForAFailureToo) {
    standins::answers.openUrlStatus = 1;

    EXPECT_THROW(openAddress("odd://x"), IOException);
}

TEST_F(OpenDocument, OpensAReferenceOfTheFile) {
    openDocument("/Users/me/a b.pdf");

    EXPECT_THAT(standins::calls, ElementsAre("FSPathMakeRef('/Users/me/a b.pdf', zeroed ref, null)",
                                             "LSOpenFSRef(ref, null)"));
}

TEST_F(OpenDocument, GoesOnWhenThereIsNoSuchFile) {
    standins::answers.makeRefStatus = fileNotFound;

    EXPECT_NO_THROW(openDocument("missing.txt"));

    EXPECT_THAT(standins::calls, ElementsAre("FSPathMakeRef('missing.txt', zeroed ref, null)",
                                             "LSOpenFSRef(zeroed ref, null)"));
}

TEST_F(OpenDocument, IgnoresThatNoApplicationOpensTheFile) {
    standins::answers.openRefStatus = noApplicationFound;

    EXPECT_NO_THROW(openDocument("a.unknown"));

    EXPECT_EQ(standins::calls.size(), 2U);
}

}  // namespace
}  // namespace corvane
