#include "text/memory_stream.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>

namespace corvane {
namespace {

TEST(MemoryStream, GivesLinesAndThenTheRest) {
    MemoryStream in("first\nsecond\nthe\nrest");
    std::string line;
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, "first");
    ASSERT_TRUE(std::getline(in, line));
    EXPECT_EQ(line, "second");
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "the\nrest");
}

TEST(MemoryStream, HasNothingWithoutAText) {
    MemoryStream in;
    EXPECT_EQ(in.get(), std::istream::traits_type::eof());
    EXPECT_TRUE(in.eof());
}

TEST(MemoryStream, ReadsAnyBytes) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes += static_cast<char>(byte);
    }
    MemoryStream in(bytes);
    std::ostringstream out;
    out << in.rdbuf();
    EXPECT_EQ(out.str(), bytes);
}

TEST(MemoryStream, StartsAgainWithAnotherTextAfterTheEnd) {
    MemoryStream in("one");
    std::string word;
    in >> word;
    in >> word;
    EXPECT_TRUE(in.fail());
    in.open("two");
    ASSERT_TRUE(in >> word);
    EXPECT_EQ(word, "two");
}

TEST(MemoryStream, ForgetsTheRestOfATextForTheNext) {
    MemoryStream in("one\nrest");
    std::string line;
    std::getline(in, line);
    in.open("two");
    std::getline(in, line);
    EXPECT_EQ(line, "two");
    EXPECT_TRUE(in.eof());
}

TEST(MemoryStream, ReadsTheTextWhereItLies) {
    std::string text = "abc";
    MemoryStream in(text);
    text[1] = 'x';
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), "axc");
}

}  // namespace
}  // namespace corvane
