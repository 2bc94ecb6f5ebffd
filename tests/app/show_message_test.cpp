#include <gtest/gtest.h>

#include "app/start.h"

namespace corvane {
namespace {

TEST(ShowMessage, PrintsTheTitleAndTheTextOnTwoLines) {
    testing::internal::CaptureStdout();
    showMessage("title", "a 100% text");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "title\na 100% text\n");
}

}  // namespace
}  // namespace corvane
