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
        // It ends with its memory, so that a sanitizer sees any byte read behind the zero.
        const std::vector<char> copy(text.c_str(), text.c_str() + text.size() + 1);
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
