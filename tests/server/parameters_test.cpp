#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>

#include "server/server.h"

namespace corvane {
namespace {

TEST(Getline, StripsAllLineEndsAtTheEnd) {
    std::istringstream in("one\r\ntwo\r\r\n\nfour\rfour\nvalue\r");
    EXPECT_EQ(Server::getline(in), "one");
    EXPECT_EQ(Server::getline(in), "two");
    EXPECT_EQ(Server::getline(in), "");
    EXPECT_EQ(Server::getline(in), "four\rfour");
    EXPECT_EQ(Server::getline(in), "value");
    EXPECT_FALSE(in.fail());
    EXPECT_EQ(Server::getline(in), "");
    EXPECT_TRUE(in.fail());
}

TEST(Getline, TakesAtMost1023CharactersBeforeALineEnd) {
    for (const std::size_t length : {1022U, 1023U}) {
        std::istringstream in(std::string(length, 'x') + "\nnext");
        EXPECT_EQ(Server::getline(in), std::string(length, 'x'));
        EXPECT_EQ(Server::getline(in), "next");
    }
}

TEST(Getline, GivesNothingAnyMoreAfterALineThatIsTooLong) {
    for (const std::size_t length : {1024U, 2000U}) {
        std::istringstream in(std::string(length, 'x') + "\nnext\n");
        EXPECT_EQ(Server::getline(in), "");
        EXPECT_EQ(Server::getline(in), "");
        EXPECT_TRUE(in.fail());
    }
}

TEST(TakeLine, TakesLinesLikeGetlineOffTheTextUntilItIsEmpty) {
    std::string_view text = "one\r\n\r\r\n\nlast\r";
    for (const char* expected : {"one", "", "", "last"}) {
        EXPECT_EQ(Server::takeLine(text), expected);
    }
    EXPECT_EQ(Server::takeLine(text), std::nullopt);
}

TEST(TakeLine, RefusesALineOfMoreThan1023Characters) {
    const std::string longest(1023, 'x');
    for (const std::string end : {"", "\n", "\nnext"}) {
        const std::string right = longest + end;
        const std::string wrong = "x" + right;
        std::string_view text = right;
        EXPECT_EQ(Server::takeLine(text), longest);
        text = wrong;
        EXPECT_EQ(Server::takeLine(text), std::nullopt);
    }
}

}  // namespace
}  // namespace corvane
