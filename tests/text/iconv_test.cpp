// The tables against the system's own conversion: a program of its own, because macOS has iconv in
// a library that a system may do without.
#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "text/code_sets.h"

namespace corvane::strconv {
namespace {

class SystemConversion {
  public:
    explicit SystemConversion(const char* codeSet) : handle_(::iconv_open("UTF-16LE", codeSet)) {}
    ~SystemConversion() {
        if (isOpen()) {
            ::iconv_close(handle_);
        }
    }
    SystemConversion(const SystemConversion&) = delete;
    SystemConversion& operator=(const SystemConversion&) = delete;
    SystemConversion(SystemConversion&&) = delete;
    SystemConversion& operator=(SystemConversion&&) = delete;

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

TEST(Iconv, AgreesWithTheTablesOnEveryDefinedByte) {
    const std::array<const char*, 4> names{"ISO-8859-1", "ISO-8859-2", "CP1250", "CP1252"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const SystemConversion system(names[i]);
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

}  // namespace
}  // namespace corvane::strconv
