// The UTF-8 half of text/strconv.h.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "text/strconv.h"

namespace corvane::strconv {
namespace {

std::string encode(wchar_t c) {
    std::array<char, 3> bytes{};
    return {bytes.data(), wchar2utf8char(c, bytes.data())};
}

// A copy that ends with its memory, so that a sanitizer sees any byte read behind the zero.
std::vector<char> exactCopy(const std::string& text) {
    return {text.c_str(), text.c_str() + text.size() + 1};
}

TEST(Utf8len, CountsCharactersOfUpToThreeBytes) {
    EXPECT_EQ(utf8len(""), 0U);
    EXPECT_EQ(utf8len("abc"), 3U);
    EXPECT_EQ(utf8len("Łódź"), 4U);
    EXPECT_EQ(utf8len("a€b"), 3U);
    EXPECT_EQ(utf8len(nullptr), 0U);
}

TEST(Utf8len, SkipsBytesThatBeginNoCharacter) {
    EXPECT_EQ(utf8len("\x80\xBF"), 0U);
    EXPECT_EQ(utf8len("a\x80z"), 2U);
    EXPECT_EQ(utf8len("\xF0\x9F\x98\x80"), 0U);
    EXPECT_EQ(utf8len("\xFF\xFE"), 0U);
}

TEST(Utf8len, CountsACutCharacterAndStopsAtTheEnd) {
    EXPECT_EQ(utf8len(exactCopy("\xC5").data()), 1U);
    EXPECT_EQ(utf8len(exactCopy("a\xE2\x82").data()), 2U);
}

TEST(Utf8char2wchar, DecodesOneToThreeBytes) {
    wchar_t c = 0;
    EXPECT_EQ(utf8char2wchar("az", c), 1U);
    EXPECT_EQ(c, L'a');
    EXPECT_EQ(utf8char2wchar("\xC5\x81z", c), 2U);
    EXPECT_EQ(c, 0x141);
    EXPECT_EQ(utf8char2wchar("\xE2\x82\xACz", c), 3U);
    EXPECT_EQ(c, 0x20AC);
}

TEST(Utf8char2wchar, TakesTheEndOfACStringAsACharacterButNotAnEmptyView) {
    wchar_t c = 1;
    EXPECT_EQ(utf8char2wchar("", c), 1U);
    EXPECT_EQ(c, 0);
    EXPECT_EQ(utf8char2wchar(std::string_view(), c), 0U);
}

TEST(Utf8char2wchar, DoesNotValidateContinuationBytes) {
    wchar_t c = 0;
    EXPECT_EQ(utf8char2wchar("\xC5"
                             "A",
                             c),
              2U);
    EXPECT_EQ(c, 0x141);
}

TEST(Utf8char2wchar, RefusesOtherLeadsAndCutSequences) {
    for (const char* const text :
         {"\x80", "\xBF", "\xF0\x9F\x98\x80", "\xF8", "\xFF", "\xC5", "\xE2", "\xE2\x82"}) {
        const std::vector<char> copy = exactCopy(text);
        wchar_t c = L'?';
        EXPECT_EQ(utf8char2wchar(copy.data(), c), 0U);
        EXPECT_EQ(utf8char2wchar(std::string_view(text), c), 0U);
        EXPECT_EQ(c, L'?');
    }
}

TEST(Wchar2utf8char, EncodesUpToThreeBytes) {
    EXPECT_EQ(encode(0), std::string(1, '\0'));
    EXPECT_EQ(encode(0x7F), "\x7F");
    EXPECT_EQ(encode(0x80), "\xC2\x80");
    EXPECT_EQ(encode(0x7FF), "\xDF\xBF");
    EXPECT_EQ(encode(0x800), "\xE0\xA0\x80");
    EXPECT_EQ(encode(0xFFFF), "\xEF\xBF\xBF");
    EXPECT_EQ(encode(0x10000), "");
    EXPECT_EQ(encode(static_cast<wchar_t>(-1)), "");
}

TEST(Wchar2utf8char, IsUndoneByDecoding) {
    for (wchar_t c = 0; c <= 0xFFFF; ++c) {
        const std::string bytes = encode(c);
        wchar_t decoded = 0;
        ASSERT_EQ(utf8char2wchar(std::string_view(bytes), decoded), bytes.size());
        ASSERT_EQ(decoded, c);
        ASSERT_EQ(utf8size(c), bytes.size());
    }
}

TEST(Ucs22utf8, EncodesAString) {
    EXPECT_EQ(ucs22utf8(L"Łódź €"), "Łódź €");
    EXPECT_EQ(ucs22utf8(L""), "");
    EXPECT_EQ(ucs22utf8(nullptr), "");
}

TEST(Utf8size, SumsUpAString) {
    EXPECT_EQ(utf8size(L"Łódź €"), std::strlen("Łódź €"));
    EXPECT_EQ(utf8size(static_cast<const wchar_t*>(nullptr)), 0U);
}

}  // namespace
}  // namespace corvane::strconv
