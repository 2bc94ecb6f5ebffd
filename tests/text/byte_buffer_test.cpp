#include "text/byte_buffer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <string>

#include "text/exception.h"

namespace corvane {
namespace {

TEST(ByteBuffer, IsEmptyAtFirst) {
    const ByteBuffer buffer;
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_EQ(buffer.view(), "");
}

TEST(ByteBuffer, KeepsWhatIsAppendedWhileItGrows) {
    ByteBuffer buffer;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        const std::string text = std::to_string(i) + std::string(static_cast<std::size_t>(i), 'x');
        buffer.append(text);
        expected += text;
    }
    EXPECT_EQ(buffer.view(), expected);
}

TEST(ByteBuffer, TakesNothingAndZeroBytes) {
    ByteBuffer buffer;
    buffer.append("");
    EXPECT_EQ(buffer.size(), 0U);
    buffer.append(std::string_view("a\0b", 3));
    EXPECT_EQ(buffer.view(), std::string_view("a\0b", 3));
}

TEST(ByteBuffer, CountsOnlyWhatWasCommitted) {
    ByteBuffer buffer;
    buffer.append("ab");
    std::memcpy(buffer.room(100), "cdef", 4);
    EXPECT_EQ(buffer.view(), "ab");
    buffer.commit(2);
    EXPECT_EQ(buffer.view(), "abcd");
    buffer.append("e");
    EXPECT_EQ(buffer.view(), "abcde");
}

TEST(ByteBuffer, KeepsItsRoomWhenItIsCleared) {
    ByteBuffer buffer;
    buffer.append(std::string(1000, 'x'));
    const char* const place = buffer.data();
    buffer.clear();
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_EQ(buffer.room(1000), place);
}

TEST(ByteBuffer, GivesBackOnlyMoreRoomThanTheLimit) {
    ByteBuffer buffer;
    buffer.append(std::string(1000, 'x'));
    const char* const place = buffer.data();
    buffer.clearAndShrink(1000);
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_EQ(buffer.data(), place);
    buffer.clearAndShrink(999);
    EXPECT_EQ(buffer.data(), nullptr);
    buffer.append("again");
    EXPECT_EQ(buffer.view(), "again");
}

TEST(ByteBuffer, FailsWithoutLosingAnythingWhenMemoryIsShort) {
    ByteBuffer buffer;
    buffer.append("kept");
    for (const std::size_t count :
         {std::numeric_limits<std::size_t>::max(), std::numeric_limits<std::size_t>::max() / 2}) {
        try {
            buffer.room(count);
            FAIL() << "room for " << count;
        } catch (const IOException& e) {
            EXPECT_EQ(e.code, ENOMEM);
        }
    }
    EXPECT_EQ(buffer.view(), "kept");
}

}  // namespace
}  // namespace corvane
