#include "text/code_sets.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace corvane::strconv {
namespace {

bool sameRow(const CSENTRY& a, const CSENTRY& b) {
    return a.code == b.code && a.unicode == b.unicode;
}

// The system's own conversion, to compare with.
class Iconv {
  public:
    explicit Iconv(const char* codeSet) : handle_(::iconv_open("UTF-16LE", codeSet)) {}
    ~Iconv() {
        if (isOpen()) {
            ::iconv_close(handle_);
        }
    }
    Iconv(const Iconv&) = delete;
    Iconv& operator=(const Iconv&) = delete;
    Iconv(Iconv&&) = delete;
    Iconv& operator=(Iconv&&) = delete;

    // Failure is the pointer value -1.
    bool isOpen() const { return reinterpret_cast<std::intptr_t>(handle_) != -1; }

    /// Nothing for a byte that the code set leaves undefined.
    std::optional<int> unicodeOf(int byte) const {
        char in = static_cast<char>(byte);
        std::array<unsigned char, 2> out{};
        char* from = &in;
        char* to = reinterpret_cast<char*>(out.data());
        std::size_t fromSize = 1;
        std::size_t toSize = out.size();
        const bool defined = ::iconv(handle_, &from, &fromSize, &to, &toSize) == 0;
        return defined ? std::optional<int>(out[0] | out[1] << 8) : std::nullopt;
    }

  private:
    iconv_t handle_;
};

int unicodeIn(const CSTABLE& table, int byte) {
    const auto row = std::find_if(table.begin(), table.end(),
                                  [byte](const CSENTRY& entry) { return entry.code == byte; });
    return row == table.end() ? byte : row->unicode;
}

TEST(CodeSets, AgreeWithTheSystemOnEveryDefinedByte) {
    const std::array<const char*, 4> names{"ISO-8859-1", "ISO-8859-2", "CP1250", "CP1252"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const Iconv system(names[i]);
        if (!system.isOpen()) {
            GTEST_SKIP() << "this system does not know " << names[i];
        }
        int defined = 0;
        for (int byte = 0; byte < 256; ++byte) {
            if (const std::optional<int> unicode = system.unicodeOf(byte); unicode) {
                EXPECT_EQ(unicodeIn(TABLES_BY_CODE[i], byte), *unicode) << names[i] << " " << byte;
                ++defined;
            }
        }
        EXPECT_GE(defined, 251);  // Windows-1250 and Windows-1252 leave five bytes undefined
    }
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
