#include "cvnopen/launch_services.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cvnopen/framework_stand_ins.h"

namespace corvane::cvnopen {
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
    EXPECT_EQ(openAddress("http://server/page"), 0);

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

    EXPECT_EQ(openAddress("http:/ /%"), std::nullopt);
    EXPECT_THAT(standins::calls,
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, 'http:/ /%', 9, 134217984, "
                            "null)"));
}

TEST_F(OpenAddress, ReportsTheStatusOfLaunchServicesAfterReleasingTheUrl) {
    standins::answers.openUrlStatus = noApplicationFound;

    EXPECT_EQ(openAddress("odd://x"), noApplicationFound);
    EXPECT_THAT(standins::calls,
                ElementsAre("CFURLCreateWithBytes(kCFAllocatorDefault, 'odd://x', 7, 134217984, "
                            "null)",
                            "LSOpenCFURLRef(url, null)", "CFRelease(url)"));
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
}  // namespace corvane::cvnopen
