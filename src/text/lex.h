// Comparison of UTF-8 texts in a collation order that puts the Polish letters right after their
// base letters and '_' right after '.'. Bytes that are not decodable do not take part.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// The place of a character in the order.
using LexOrder = std::uint32_t (*)(wchar_t);

/// The case-sensitive and the case-blind key. The case-blind one sets bit 0x20 of every character,
/// not only of letters, so '@' and '`' are equal as well.
std::uint32_t lex_coll(wchar_t c);
std::uint32_t lex_icoll(wchar_t c);

/// The comparisons and lex_upper(), lex_lower() are a provided interface; the program itself sorts
/// by keys and only asks lex_stricmp(), for cmpFileInfo2().
///
/// -1, 0 or 1: the first character whose keys differ decides, else the shorter text is smaller.
/// A null pointer is smaller than any text and equal to another null pointer.
int lex_strcmp_coll(const char* a, const char* b, LexOrder key);
int lex_strcmp_coll(std::string_view a, std::string_view b, LexOrder key);

/// lex_strcmp_coll() by lex_coll: upper case before lower case.
int lex_strcmp(const char* a, const char* b);
int lex_strcmp(std::string_view a, std::string_view b);

/// lex_strcmp_coll() by lex_icoll: case is ignored.
int lex_stricmp(const char* a, const char* b);
int lex_stricmp(std::string_view a, std::string_view b);

/// Turns texts into bytes whose plain comparison (as by std::string's <) gives the order of
/// lex_strcmp_coll(), so that sorting many names decodes each of them once. An ASCII character
/// takes one byte.
class SortKeyEncoder {
  public:
    /// Asks `key` for every ASCII character.
    explicit SortKeyEncoder(LexOrder key);

    void append(std::string_view text, std::string& bytes) const;

  private:
    void appendAscii(std::string_view& text, std::string& bytes) const;
    void appendPlace(std::uint32_t place, std::string& bytes) const;

    LexOrder key_;
    /// The places of the ASCII characters in their order.
    std::vector<std::uint32_t> places_;
    /// The byte of every ASCII character; 0 for one that takes several bytes.
    std::array<unsigned char, 128> ascii_{};
};

/// The bytes of one text.
std::string sortKey(std::string_view text, LexOrder key);

/// 'A' to 'Z' stay as they are; 'a' to 'z' give 1 to 26, not their upper-case form, as they always
/// did; the Polish letters give their upper-case form, all other characters stay.
wchar_t lex_upper(wchar_t c);

/// The lower-case form of 'A' to 'Z' and of the Polish letters; all other characters stay.
wchar_t lex_lower(wchar_t c);

}  // namespace corvane
