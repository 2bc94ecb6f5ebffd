// Conversion of byte strings between UTF-8 and the single-byte code sets of text/code_sets.h, and
// the choice of the code set of file names and system calls (the active code set, "acs").
// UTF-8 here has characters of one to three bytes, so code points up to U+FFFF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "text/code_sets.h"

namespace corvane::strconv {

/// Number of characters of `s`, 0 when it is null. Bytes that cannot begin a character of at most
/// three bytes are not counted.
std::size_t utf8len(const char* s);

/// Decodes the first character of `s` into `c` and returns the bytes used; 0, with `c` unchanged,
/// when it is not decodable: it begins with a continuation byte or the lead of a longer sequence,
/// or the text ends within the sequence. Continuation bytes are not validated.
std::size_t utf8char2wchar(const char* s, wchar_t& c);
std::size_t utf8char2wchar(std::string_view s, wchar_t& c);

/// Writes the UTF-8 form of `c` to `out`, which has room for three bytes, and returns the bytes
/// written; 0 when `c` is above U+FFFF. Writes no terminating zero.
std::size_t wchar2utf8char(wchar_t c, char* out);

/// Bytes that the UTF-8 form needs, without a terminating zero; 0 for a null string.
std::size_t utf8size(wchar_t c);
std::size_t utf8size(const wchar_t* s);

/// The UTF-8 form of a zero-terminated string, empty when it is null.
std::string ucs22utf8(const wchar_t* s);

/// What a byte without a row in its table stands for: the value of the same number.
constexpr wchar_t codeNotFound(unsigned char code) { return static_cast<wchar_t>(code); }

/// What a Unicode value without a row becomes: the byte of the same number if there is one.
constexpr char unicodeNotFound(wchar_t unicode, char replacement) {
    return static_cast<std::uint32_t>(unicode) < 256 ? static_cast<char>(unicode) : replacement;
}

/// The Unicode value of a byte; a code set number without a table is ISO 8859-1.
wchar_t char2wchar(char c, int codeSet);

/// The byte of a Unicode value, `replacement` when the code set has none.
char wchar2char(wchar_t unicode, int codeSet, char replacement);

/// The byte of the code set `to` for the byte `c` of the code set `from`; neither may be UTF8.
char char2char(char c, int from, int to, char replacement);

/// Converts a string. Bytes of UTF-8 that are not decodable are dropped; characters that the code
/// set `to` lacks become '?'. A null `s` gives an empty string.
std::string str2str(const char* s, int from, int to);
std::string str2str(std::string_view s, int from, int to);

/// The code set number of file names and system calls: always UTF8 on the supported systems.
int getACS();

/// From UTF-8 to the active code set and back. They take the string by value so that a temporary
/// passes through without a copy; a null pointer gives an empty string.
std::string utf82acs(std::string s);
std::string utf82acs(const char* s);
std::string acs2utf8(std::string s);
std::string acs2utf8(const char* s);

/// For diagnostics: each byte as a signed decimal number, followed by a blank.
std::string strcodes(std::string_view s);

}  // namespace corvane::strconv
