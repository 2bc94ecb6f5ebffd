#include "text/lex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace corvane {
namespace {

const std::string UPPER_POLISH = "ÓĄĆĘŁŃŚŹŻ";
const std::string LOWER_POLISH = "óąćęłńśźż";

constexpr int rounds = 5'000;  // few, for builds that are neither optimised nor alone

int sign(const std::string& a, const std::string& b) { return (a > b ? 1 : 0) - (a < b ? 1 : 0); }

// Bytes of every kind: letters of both cases, '_', Polish letters, other characters, broken ones.
std::string randomText(std::mt19937& random) {
    static const std::vector<std::string> parts = {"a",        "A",
                                                   "b",        "z",
                                                   "_",        ".",
                                                   "/",        "@",
                                                   "`",        "\x01",
                                                   "ą",        "Ą",
                                                   "ż",        "Ź",
                                                   "Ż",        "é",
                                                   "€",        "\uFFFF",
                                                   "\x80",     "\xC5",
                                                   "\xE2\x82", "\xF0\x9F\x98\x80",
                                                   "\xFF",     "\x7F",
                                                   "~",        "Ā"};
    std::string text;
    for (auto count = random() % 6; count > 0; --count) {
        text += parts[random() % parts.size()];
    }
    return text;
}

TEST(LexColl, PutsTheLettersBehindTheirBaseLetters) {
    EXPECT_EQ(lex_coll(L'a'), 0x6100U);
    EXPECT_EQ(lex_coll(0x105), 0x6101U);
    EXPECT_EQ(lex_coll(0x104), 0x4101U);
    EXPECT_EQ(lex_coll(0x179), 0x5A01U);
    EXPECT_EQ(lex_coll(0x17B), 0x5A02U);
    EXPECT_EQ(lex_coll(L'_'), 0x2E01U);
    EXPECT_EQ(lex_coll(0x20AC), 0x20AC00U);
    EXPECT_EQ(lex_coll(0), 0U);
}

TEST(LexIcoll, IsBlindToCase) {
    EXPECT_EQ(lex_icoll(L'A'), 0x6100U);
    EXPECT_EQ(lex_icoll(L'a'), 0x6100U);
    EXPECT_EQ(lex_icoll(0x104), 0x6101U);
    EXPECT_EQ(lex_icoll(0x105), 0x6101U);
    EXPECT_EQ(lex_icoll(L'_'), 0x2E01U);
}

TEST(LexIcoll, SetsTheCaseBitOfEveryCharacter) {
    EXPECT_EQ(lex_icoll(L'@'), lex_icoll(L'`'));
    EXPECT_EQ(lex_icoll(L'['), 0x7B00U);
    EXPECT_EQ(lex_icoll(L'\x03'), 0x2300U);
    EXPECT_EQ(lex_icoll(0xC9), lex_icoll(0xE9));
}

TEST(LexStrcmp, PutsPolishNamesInTheirPlace) {
    EXPECT_EQ(lex_strcmp("Lodz", "Łódź"), -1);
    EXPECT_EQ(lex_strcmp("Łódź", "Mama"), -1);
    EXPECT_EQ(lex_strcmp("Mama", "Lodz"), 1);
    EXPECT_EQ(lex_strcmp("ź", "ż"), -1);
    EXPECT_EQ(lex_strcmp("z", "ź"), -1);
}

TEST(LexStrcmp, PutsTheUnderscoreBetweenDotAndSlash) {
    EXPECT_EQ(lex_strcmp(".a", "_a"), -1);
    EXPECT_EQ(lex_strcmp("_a", "/a"), -1);
}

TEST(LexStrcmp, TellsCasesApart) {
    EXPECT_EQ(lex_strcmp("B", "a"), -1);
    EXPECT_EQ(lex_strcmp("Ą", "ą"), -1);
    EXPECT_EQ(lex_strcmp("a", "a"), 0);
}

TEST(LexStrcmp, PutsTheShorterTextFirst) {
    EXPECT_EQ(lex_strcmp("ab", "abc"), -1);
    EXPECT_EQ(lex_strcmp("abc", "ab"), 1);
    EXPECT_EQ(lex_strcmp("", "a"), -1);
    EXPECT_EQ(lex_strcmp("", ""), 0);
}

TEST(LexStrcmp, PutsNullFirst) {
    EXPECT_EQ(lex_strcmp(nullptr, ""), -1);
    EXPECT_EQ(lex_strcmp("", nullptr), 1);
    EXPECT_EQ(lex_strcmp(nullptr, nullptr), 0);
    EXPECT_EQ(lex_stricmp(nullptr, "a"), -1);
    EXPECT_EQ(lex_stricmp(nullptr, nullptr), 0);
}

TEST(LexStricmp, IgnoresCase) {
    EXPECT_EQ(lex_stricmp("ŁÓDŹ", "łódź"), 0);
    EXPECT_EQ(lex_stricmp(UPPER_POLISH, LOWER_POLISH), 0);
    EXPECT_EQ(lex_stricmp("B", "a"), 1);
    EXPECT_EQ(lex_stricmp("readme", "README"), 0);
    EXPECT_EQ(lex_stricmp(std::string("A"), "b"), -1);
}

TEST(LexStrcmpColl, SkipsUndecodableBytes) {
    EXPECT_EQ(lex_strcmp("a\xFF"
                         "b",
                         "ab"),
              0);
    EXPECT_EQ(lex_strcmp("a\xF0\x9F\x98\x80", "a"), 0);
    EXPECT_EQ(lex_strcmp("a\xE2\x82", "a"), 0);
}

TEST(LexStrcmpColl, UsesTheKeyItIsGiven) {
    const LexOrder backwards = [](wchar_t c) {
        return 0xFFFFFFFFU - static_cast<std::uint32_t>(c);
    };
    EXPECT_EQ(lex_strcmp_coll("a", "b", backwards), 1);
    EXPECT_EQ(lex_strcmp_coll("a", "ab", backwards), -1);
    EXPECT_GT(sortKey("a", backwards), sortKey("b", backwards));
}

TEST(LexStrcmpColl, IsAStrictWeakOrderOfAnyBytes) {
    std::seed_seq seed{2};
    std::mt19937 random(seed);
    for (int i = 0; i < rounds; ++i) {
        const std::string a = randomText(random);
        const std::string b = randomText(random);
        const std::string c = randomText(random);
        ASSERT_EQ(lex_stricmp(a, a), 0);
        ASSERT_EQ(lex_stricmp(a, b), -lex_stricmp(b, a));
        if (lex_stricmp(a, b) <= 0 && lex_stricmp(b, c) <= 0) {
            ASSERT_LE(lex_stricmp(a, c), 0);
        }
    }
}

TEST(SortKey, OrdersLikeTheComparison) {
    std::seed_seq seed{3};
    std::mt19937 random(seed);
    for (int i = 0; i < rounds; ++i) {
        const std::string a = randomText(random);
        const std::string b = randomText(random);
        ASSERT_EQ(sign(sortKey(a, lex_icoll), sortKey(b, lex_icoll)), lex_stricmp(a, b));
        ASSERT_EQ(sign(sortKey(a, lex_coll), sortKey(b, lex_coll)), lex_strcmp(a, b));
    }
}

TEST(SortKey, OrdersKeysOfEverySize) {
    const LexOrder wide = [](wchar_t c) {
        static constexpr std::uint32_t KEYS[] = {0,      1,       0xFF,     0x100,     0x7FFF,
                                                 0x8000, 0x10000, 0xFFFFFF, 0x1000000, 0xFFFFFFFF};
        return c >= L'0' && c <= L'9' ? KEYS[c - L'0'] : 0;  // asked for every ASCII character
    };
    for (char c = '1'; c <= '9'; ++c) {
        EXPECT_LT(sortKey(std::string(1, static_cast<char>(c - 1)), wide),
                  sortKey(std::string(1, c), wide));
    }
}

TEST(LexUpper, KeepsUpperCaseAndGivesLowerCaseItsNumberInTheAlphabet) {
    EXPECT_EQ(lex_upper(L'A'), L'A');
    EXPECT_EQ(lex_upper(L'Z'), L'Z');
    EXPECT_EQ(lex_upper(L'a'), 1);
    EXPECT_EQ(lex_upper(L'z'), 26);
}

TEST(LexUpper, GivesTheUpperFormOfPolishLetters) {
    EXPECT_EQ(lex_upper(0x105), 0x104);
    EXPECT_EQ(lex_upper(0x104), 0x104);
    EXPECT_EQ(lex_upper(0xF3), 0xD3);
    EXPECT_EQ(lex_upper(0x17C), 0x17B);
    EXPECT_EQ(lex_upper(L'_'), L'_');
    EXPECT_EQ(lex_upper(0xE9), 0xE9);
    EXPECT_EQ(lex_upper(L'1'), L'1');
}

TEST(LexLower, GivesTheLowerForm) {
    EXPECT_EQ(lex_lower(L'A'), L'a');
    EXPECT_EQ(lex_lower(L'Z'), L'z');
    EXPECT_EQ(lex_lower(L'z'), L'z');
    EXPECT_EQ(lex_lower(L'['), L'[');
    EXPECT_EQ(lex_lower(L'_'), L'_');
    EXPECT_EQ(lex_lower(0x104), 0x105);
    EXPECT_EQ(lex_lower(0x17A), 0x17A);
    EXPECT_EQ(lex_lower(0xC9), 0xC9);
}

}  // namespace
}  // namespace corvane
