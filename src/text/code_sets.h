// The single-byte code sets that text/strconv.h converts, as tables of byte code and Unicode value.
// A byte without a row stands for the Unicode value of the same number. A provided interface: the
// program itself stays with UTF-8 on the supported systems.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace corvane::strconv {

/// The code set number of UTF-8; the numbers from 0 on index the tables below.
inline constexpr int UTF8 = -1;

/// One row: a byte and its Unicode value, 0 for a byte that the code set leaves undefined.
struct CSENTRY {
    std::uint8_t code;
    std::uint16_t unicode;
};

using CSTABLE = std::span<const CSENTRY>;

/// Orders rows by Unicode value, rows of the same value by code.
constexpr bool cseCmpByUnicode(const CSENTRY& a, const CSENTRY& b) {
    return a.unicode != b.unicode ? a.unicode < b.unicode : a.code < b.code;
}

inline constexpr int TABLE_COUNT = 4;

/// By code set number, each table sorted by code: none (ISO 8859-1), ISO 8859-2, Windows-1250,
/// Windows-1252.
extern const std::array<CSTABLE, TABLE_COUNT> TABLES_BY_CODE;

/// The same tables, each sorted by cseCmpByUnicode.
extern const std::array<CSTABLE, TABLE_COUNT> TABLES_BY_UNICODE;

}  // namespace corvane::strconv
