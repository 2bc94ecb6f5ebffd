#include "text/code_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <vector>

namespace corvane::strconv {
namespace {

bool sameRow(const CSENTRY& a, const CSENTRY& b) {
    return a.code == b.code && a.unicode == b.unicode;
}

TEST(CodeSets, HaveTheirNumbersOfRows) {
    ASSERT_EQ(TABLES_BY_CODE.size(), 4U);
    EXPECT_EQ(TABLES_BY_CODE[0].size(), 0U);
    EXPECT_EQ(TABLES_BY_CODE[1].size(), 96U);
    EXPECT_EQ(TABLES_BY_CODE[2].size(), 79U);
    EXPECT_EQ(TABLES_BY_CODE[3].size(), 27U);
}

TEST(CodeSets, AreSortedByCodeWithoutRepetition) {
    for (const CSTABLE& table : TABLES_BY_CODE) {
        const auto notAscending = [](const CSENTRY& a, const CSENTRY& b) {
            return a.code >= b.code;
        };
        EXPECT_EQ(std::adjacent_find(table.begin(), table.end(), notAscending), table.end());
    }
}

TEST(CodeSets, HaveTheSameRowsSortedByUnicode) {
    for (std::size_t i = 0; i < TABLES_BY_CODE.size(); ++i) {
        const CSTABLE sorted = TABLES_BY_UNICODE[i];
        EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), cseCmpByUnicode));
        EXPECT_TRUE(std::is_permutation(sorted.begin(), sorted.end(), TABLES_BY_CODE[i].begin(),
                                        TABLES_BY_CODE[i].end(), sameRow));
    }
}

TEST(CodeSets, ListTheUndefinedBytesOfWindows1250) {
    std::vector<int> undefined;
    for (const CSENTRY& row : TABLES_BY_CODE[2]) {
        if (row.unicode == 0) {
            undefined.push_back(row.code);
        }
    }
    EXPECT_EQ(undefined, (std::vector<int>{0x81, 0x83, 0x88, 0x90, 0x98}));
}

TEST(CodeSets, OrderRowsByUnicodeThenByCode) {
    EXPECT_TRUE(cseCmpByUnicode({0xFF, 1}, {0x80, 2}));
    EXPECT_FALSE(cseCmpByUnicode({0x80, 2}, {0xFF, 1}));
    EXPECT_TRUE(cseCmpByUnicode({0x80, 1}, {0x81, 1}));
    EXPECT_FALSE(cseCmpByUnicode({0x80, 1}, {0x80, 1}));
}

}  // namespace
}  // namespace corvane::strconv
