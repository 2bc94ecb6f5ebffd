#include "text/exception.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Exceptions, GiveTheirMessageAsWhat) {
    const Exception exception("it broke");
    EXPECT_EQ(exception.message, "it broke");
    EXPECT_STREQ(exception.what(), "it broke");
}

TEST(Exceptions, IOExceptionPutsTheCodeBehindTheText) {
    const IOException exception("x", 13);
    EXPECT_EQ(exception.message, "x (13)");
    EXPECT_EQ(exception.code, 13);
    EXPECT_EQ(IOException::iomsg("x", 13), exception.message);
}

TEST(Exceptions, IOExceptionShowsAlsoTheCodesZeroAndMinusOne) {
    EXPECT_STREQ(IOException("x", 0).what(), "x (0)");
    EXPECT_STREQ(IOException("", -1).what(), " (-1)");
}

TEST(Exceptions, FileNotFoundNamesThePath) {
    const FileNotFoundException exception("/a/b");
    EXPECT_EQ(exception.message, "File not found: /a/b");
    EXPECT_EQ(exception.path, "/a/b");
}

TEST(Exceptions, AreAllCaughtAsException) {
    EXPECT_THROW(throw IOException("x", 1), Exception);
    EXPECT_THROW(throw FileNotFoundException("x"), Exception);
    EXPECT_THROW(throw ShutdownException("x"), Exception);
    EXPECT_THROW(throw ConfigureFailure("x"), Exception);
    EXPECT_THROW(throw Exception("x"), std::exception);
}

}  // namespace
}  // namespace corvane
