#include "text/strconv.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace corvane::strconv {
namespace {

constexpr int ISO8859_1 = 0;
constexpr int ISO8859_2 = 1;
constexpr int CP1250 = 2;
constexpr int CP1252 = 3;
constexpr int NO_SUCH_SET = 4;

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

TEST(NotFound, GivesTheSameNumberWhereItFitsAByte) {
    EXPECT_EQ(codeNotFound(0xE9), 0xE9);
    EXPECT_EQ(unicodeNotFound(0xE9, '?'), '\xE9');
    EXPECT_EQ(unicodeNotFound(0xFF, '?'), '\xFF');
    EXPECT_EQ(unicodeNotFound(0x100, '?'), '?');
    EXPECT_EQ(unicodeNotFound(static_cast<wchar_t>(-1), '?'), '?');
}

TEST(Char2wchar, LooksUpTheTables) {
    EXPECT_EQ(char2wchar('\xA3', ISO8859_2), 0x141);
    EXPECT_EQ(char2wchar('\xFF', ISO8859_2), 0x2D9);
    EXPECT_EQ(char2wchar('\x80', CP1250), 0x20AC);
    EXPECT_EQ(char2wchar('\x9F', CP1250), 0x17A);
    EXPECT_EQ(char2wchar('\x81', CP1250), 0);
    EXPECT_EQ(char2wchar('\x80', CP1252), 0x20AC);
    EXPECT_EQ(char2wchar('\x9F', CP1252), 0x178);
}

TEST(Char2wchar, GivesTheSameNumberWithoutARow) {
    EXPECT_EQ(char2wchar('a', ISO8859_2), L'a');
    EXPECT_EQ(char2wchar('\x9F', ISO8859_2), 0x9F);
    EXPECT_EQ(char2wchar('\xE9', CP1250), 0xE9);
    EXPECT_EQ(char2wchar('\x81', CP1252), 0x81);
    EXPECT_EQ(char2wchar('\xFF', CP1252), 0xFF);
    EXPECT_EQ(char2wchar('\xA3', ISO8859_1), 0xA3);
    EXPECT_EQ(char2wchar('\xA3', NO_SUCH_SET), 0xA3);
    EXPECT_EQ(char2wchar('\xA3', UTF8), 0xA3);
}

TEST(Wchar2char, LooksUpTheTables) {
    EXPECT_EQ(wchar2char(0x141, ISO8859_2, '?'), '\xA3');
    EXPECT_EQ(wchar2char(0x141, CP1250, '?'), '\xA3');
    EXPECT_EQ(wchar2char(0x15A, CP1250, '?'), '\x8C');
    EXPECT_EQ(wchar2char(0x20AC, CP1252, '?'), '\x80');
}

TEST(Wchar2char, GivesTheSameNumberOrTheReplacementWithoutARow) {
    EXPECT_EQ(wchar2char(L'a', CP1250, '?'), 'a');
    EXPECT_EQ(wchar2char(0xE9, CP1252, '?'), '\xE9');
    EXPECT_EQ(wchar2char(0x20AC, ISO8859_2, '#'), '#');
    EXPECT_EQ(wchar2char(0x141, ISO8859_1, '?'), '?');
    EXPECT_EQ(wchar2char(0x141, NO_SUCH_SET, '?'), '?');
    EXPECT_EQ(wchar2char(0x1F600, CP1250, '?'), '?');
}

TEST(Wchar2char, NeverTurnsZeroIntoAnUndefinedByte) { EXPECT_EQ(wchar2char(0, CP1250, '?'), '\0'); }

TEST(Char2char, ConvertsBetweenTables) {
    EXPECT_EQ(char2char('\xA6', ISO8859_2, CP1250, '?'), '\x8C');
    EXPECT_EQ(char2char('\x8C', CP1250, ISO8859_2, '?'), '\xA6');
    EXPECT_EQ(char2char('\x80', CP1250, ISO8859_2, '#'), '#');
    EXPECT_EQ(char2char('z', CP1250, CP1252, '?'), 'z');
}

TEST(Str2str, ConvertsFromUtf8ToASingleByteSet) {
    EXPECT_EQ(str2str("Łódź", UTF8, ISO8859_2), "\xA3\xF3\x64\xBC");
    EXPECT_EQ(str2str("Łódź", UTF8, CP1250), "\xA3\xF3\x64\x9F");
}

TEST(Str2str, PutsAQuestionMarkForWhatTheTargetLacks) {
    EXPECT_EQ(str2str("5 €", UTF8, ISO8859_2), "5 ?");
    EXPECT_EQ(str2str("5 \x80", CP1250, ISO8859_2), "5 ?");
}

TEST(Str2str, DropsUndecodableBytes) {
    EXPECT_EQ(str2str("a\xF0\x9F\x98\x80z", UTF8, ISO8859_2), "az");
    EXPECT_EQ(str2str("a\x80z\xE2\x82", UTF8, ISO8859_2), "az");
}

TEST(Str2str, CopiesBetweenEqualSetsWhateverTheBytes) {
    EXPECT_EQ(str2str("a\xFF\x80", UTF8, UTF8), "a\xFF\x80");
    EXPECT_EQ(str2str("a\xFF\x81", CP1250, CP1250), "a\xFF\x81");
}

TEST(Str2str, GivesAnEmptyStringForNull) {
    EXPECT_EQ(str2str(nullptr, UTF8, ISO8859_2), "");
    EXPECT_EQ(str2str(nullptr, UTF8, UTF8), "");
    EXPECT_EQ(str2str("", UTF8, ISO8859_2), "");
}

TEST(Str2str, ComesBackFromUtf8ForEveryDefinedByte) {
    for (const int codeSet : {ISO8859_1, ISO8859_2, CP1250, CP1252, NO_SUCH_SET}) {
        for (int code = 1; code < 256; ++code) {
            const std::string byte(1, static_cast<char>(code));
            if (char2wchar(byte[0], codeSet) != 0) {
                const std::string utf8 = str2str(byte, codeSet, UTF8);
                ASSERT_EQ(str2str(utf8, UTF8, codeSet), byte) << codeSet << ": " << code;
            }
        }
    }
}

TEST(Str2str, IsSafeOnAnyBytes) {
    std::seed_seq seed{1};
    std::mt19937 random(seed);
    for (int i = 0; i < 20000; ++i) {
        std::string text(random() % 8, '\0');
        for (char& c : text) {
            c = static_cast<char>(random() % 255 + 1);
        }
        const std::vector<char> copy = exactCopy(text);
        for (int codeSet = UTF8; codeSet <= NO_SUCH_SET; ++codeSet) {
            ASSERT_EQ(str2str(copy.data(), UTF8, codeSet), str2str(text, UTF8, codeSet));
            ASSERT_LE(str2str(copy.data(), codeSet, CP1250).size(), text.size());
        }
        ASSERT_LE(utf8len(copy.data()), text.size());
    }
}

TEST(ActiveCodeSet, IsUtf8SoThatNothingIsConverted) {
    EXPECT_EQ(getACS(), -1);
    const std::string text = "Łódź \xFF\xF0\x9F\x98\x80";
    EXPECT_EQ(utf82acs(text), text);
    EXPECT_EQ(acs2utf8(text), text);
    EXPECT_EQ(utf82acs(text.c_str()), text);
    EXPECT_EQ(acs2utf8(text.c_str()), text);
}

TEST(ActiveCodeSet, GivesAnEmptyStringForNull) {
    EXPECT_EQ(utf82acs(nullptr), "");
    EXPECT_EQ(acs2utf8(nullptr), "");
}

TEST(ActiveCodeSet, PassesATemporaryThroughWithoutACopy) {
    std::string text(100, 'x');
    const char* const bytes = text.data();
    const std::string passed = acs2utf8(utf82acs(std::move(text)));
    EXPECT_TRUE(passed.data() == bytes);
}

TEST(Strcodes, ListsSignedNumbers) {
    EXPECT_EQ(strcodes("Ab\xFF"), "65 98 -1 ");
    EXPECT_EQ(strcodes(""), "");
}

}  // namespace
}  // namespace corvane::strconv
