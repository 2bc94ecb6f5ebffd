#include "text/find_byte.h"

#include <gtest/gtest.h>

#include <string>

namespace corvane {
namespace {

std::size_t findX(std::string_view text) {
    return findByte(
        text, [](ByteVector bytes) { return bytesEqual(bytes, 'x'); },
        [](char c) { return c == 'x'; });
}

TEST(FindByte, FindsTheFirstAtEveryPlaceOfATextOfAnyLength) {
    for (std::size_t size = 0; size < 200; ++size) {
        std::string text(size, '.');
        EXPECT_EQ(findX(text), size);
        for (std::size_t place = size; place-- > 0;) {
            text[place] = 'x';
            EXPECT_EQ(findX(text), place) << "of " << size;
        }
    }
}

TEST(FindByte, LooksAtAllValuesOfAByte) {
    for (int value = 0; value < 256; ++value) {
        const std::string text(100, static_cast<char>(value));
        EXPECT_EQ(findX(text), value == 'x' ? 0U : 100U) << value;
    }
}

}  // namespace
}  // namespace corvane
