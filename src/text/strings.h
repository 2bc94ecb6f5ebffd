// Helpers on byte strings: printf formatting, numbers and flags, trimming, splitting, joining,
// replacing. Nothing here knows about character sets; see text/strconv.h for those.
#pragma once

#include <algorithm>
#include <cstdarg>
#include <string>
#include <string_view>
#include <vector>

namespace corvane {

/// The characters that trim() drops by default. 0x03 belongs to them on purpose: clients may leave
/// it at the end of a line.
inline constexpr std::string_view whitespace = " \t\n\r\x03";

/// Formats by the rules of printf, whatever the length of the result.
/// Throws Exception when the C library cannot convert the arguments.
[[gnu::format(printf, 1, 2)]] std::string format(const char* fmt, ...);

/// format() for an argument list; `args` may be used again by the caller only to end it.
[[gnu::format(printf, 1, 0)]] std::string formatvl(const char* fmt, va_list args);

/// Assigns the result of formatvl() to `out`.
[[gnu::format(printf, 1, 0)]] void _formatvl(const char* fmt, va_list args, std::string& out);

/// Decimal text of `number`.
std::string toString(long number);

/// The decimal number at the start of `s`, after optional blanks and a sign; what follows the
/// digits is ignored and numbers out of range give the nearest limit. Without a digit, or when `s`
/// is null, returns `def`.
long toLong(const char* s, long def);
long toLong(const std::string& s, long def);

/// Exactly "true" or "false", else whether toLong() gives something other than zero. A text that
/// is neither, or a null `s`, gives `def`.
bool toBool(const char* s, bool def);
bool toBool(const std::string& s, bool def);

/// `s` without leading and trailing characters of `set`. A string that has only such characters is
/// returned unchanged, not emptied.
std::string trim(std::string_view s, std::string_view set = whitespace);

/// Puts texts together, with one allocation at most.
template <typename... Text>
std::string concatenate(const Text&... text) {
    std::string whole((std::string_view(text).size() + ...), '\0');
    char* end = whole.data();
    ((end = std::copy_n(std::string_view(text).data(), std::string_view(text).size(), end)), ...);
    return whole;
}

/// Splits `s` at any single character of `sep`; each match skips as many characters as `sep` is
/// long. Empty pieces are kept, so the result has at least one piece.
std::vector<std::string> strExplode(std::string_view s, std::string_view sep);

/// The items with `sep` between neighbours.
std::string strImplde(const std::vector<std::string>& items, std::string_view sep);

/// Replaces as many characters as `what` is long by `with` wherever any single character of `what`
/// occurs; the search resumes behind the inserted text.
std::string strreplace(std::string_view s, std::string_view what, std::string_view with);

bool startsWith(std::string_view s, std::string_view prefix);
bool endsWith(std::string_view s, std::string_view suffix);

}  // namespace corvane
