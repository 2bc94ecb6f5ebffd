#include "text/strconv.h"

#include <algorithm>
#include <array>
#include <bit>
#include <utility>

namespace corvane::strconv {

namespace {

// Bytes of the character that `lead` begins; 0 when it begins none of at most three bytes.
std::size_t sequenceLength(char lead) {
    const int ones = std::countl_one(static_cast<unsigned char>(lead));
    if (ones == 0) {
        return 1;
    }
    return ones == 2 || ones == 3 ? static_cast<std::size_t>(ones) : 0;
}

// The table of a code set number, empty when there is none.
CSTABLE tableOf(const std::array<CSTABLE, TABLE_COUNT>& tables, int codeSet) {
    return codeSet >= 0 && codeSet < TABLE_COUNT ? tables[static_cast<std::size_t>(codeSet)]
                                                 : CSTABLE{};
}

void appendUtf8(std::string& out, wchar_t c) {
    std::array<char, 3> bytes{};
    out.append(bytes.data(), wchar2utf8char(c, bytes.data()));
}

void appendChar(std::string& out, wchar_t c, int codeSet) {
    if (codeSet == UTF8) {
        appendUtf8(out, c);
    } else {
        out += wchar2char(c, codeSet, '?');
    }
}

// A pointer to the end of a string must not be decoded as an empty view: its zero is a character.
std::string_view firstSequence(const char* s) {
    std::size_t length = 1;
    const std::size_t wanted = sequenceLength(*s);
    while (length < wanted && s[length] != '\0') {
        ++length;
    }
    return {s, length};
}

}  // namespace

std::size_t utf8len(const char* s) {
    if (s == nullptr) {
        return 0;
    }
    std::size_t count = 0;
    while (*s != '\0') {
        count += sequenceLength(*s) > 0 ? 1 : 0;
        s += firstSequence(s).size();
    }
    return count;
}

std::size_t utf8char2wchar(const char* s, wchar_t& c) {
    return utf8char2wchar(firstSequence(s), c);
}

std::size_t utf8char2wchar(std::string_view s, wchar_t& c) {
    const std::size_t length = s.empty() ? 0 : sequenceLength(s.front());
    if (length == 0 || length > s.size()) {
        return 0;
    }
    constexpr std::array<unsigned, 4> LEAD_MASKS = {0, 0x7F, 0x1F, 0x0F};
    unsigned value = static_cast<unsigned char>(s.front()) & LEAD_MASKS[length];
    for (std::size_t i = 1; i < length; ++i) {
        value = value << 6 | (static_cast<unsigned char>(s[i]) & 0x3FU);
    }
    c = static_cast<wchar_t>(value);
    return length;
}

std::size_t wchar2utf8char(wchar_t c, char* out) {
    const auto value = static_cast<char32_t>(c);
    const std::size_t size = utf8size(c);
    switch (size) {
        case 1:
            out[0] = static_cast<char>(value);
            break;
        case 2:
            out[0] = static_cast<char>(0xC0U | value >> 6);
            out[1] = static_cast<char>(0x80U | (value & 0x3FU));
            break;
        case 3:
            out[0] = static_cast<char>(0xE0U | value >> 12);
            out[1] = static_cast<char>(0x80U | (value >> 6 & 0x3FU));
            out[2] = static_cast<char>(0x80U | (value & 0x3FU));
            break;
        default:
            break;
    }
    return size;
}

std::size_t utf8size(wchar_t c) {
    const auto value = static_cast<char32_t>(c);
    if (value < 0x80) {
        return 1;
    }
    if (value < 0x800) {
        return 2;
    }
    return value <= 0xFFFF ? 3 : 0;
}

std::size_t utf8size(const wchar_t* s) {
    std::size_t size = 0;
    for (; s != nullptr && *s != L'\0'; ++s) {
        size += utf8size(*s);
    }
    return size;
}

std::string ucs22utf8(const wchar_t* s) {
    std::string out;
    out.reserve(utf8size(s));
    for (; s != nullptr && *s != L'\0'; ++s) {
        appendUtf8(out, *s);
    }
    return out;
}

wchar_t char2wchar(char c, int codeSet) {
    const auto code = static_cast<unsigned char>(c);
    const CSTABLE table = tableOf(TABLES_BY_CODE, codeSet);
    const auto row = std::lower_bound(
        table.begin(), table.end(), code,
        [](const CSENTRY& entry, unsigned char wanted) { return entry.code < wanted; });
    return row != table.end() && row->code == code ? static_cast<wchar_t>(row->unicode)
                                                   : codeNotFound(code);
}

char wchar2char(wchar_t unicode, int codeSet, char replacement) {
    // Rows of the value 0 are undefined bytes, which no character may become.
    const auto value = static_cast<char32_t>(unicode);
    if (value == 0) {
        return 0;
    }
    const CSTABLE table = tableOf(TABLES_BY_UNICODE, codeSet);
    const auto row = std::lower_bound(
        table.begin(), table.end(), value,
        [](const CSENTRY& entry, char32_t wanted) { return entry.unicode < wanted; });
    return row != table.end() && row->unicode == value ? static_cast<char>(row->code)
                                                       : unicodeNotFound(unicode, replacement);
}

char char2char(char c, int from, int to, char replacement) {
    return wchar2char(char2wchar(c, from), to, replacement);
}

std::string str2str(const char* s, int from, int to) {
    return s == nullptr ? std::string() : str2str(std::string_view(s), from, to);
}

std::string str2str(std::string_view s, int from, int to) {
    if (from == to) {
        return std::string(s);
    }
    std::string out;
    out.reserve(s.size());
    while (!s.empty()) {
        wchar_t c = from == UTF8 ? 0 : char2wchar(s.front(), from);
        const std::size_t used = from == UTF8 ? utf8char2wchar(s, c) : 1;
        if (used > 0) {
            appendChar(out, c, to);
        }
        s.remove_prefix(std::max<std::size_t>(used, 1));
    }
    return out;
}

int getACS() { return UTF8; }

std::string utf82acs(std::string s) {
    return getACS() == UTF8 ? std::move(s) : str2str(s, UTF8, getACS());
}

std::string utf82acs(const char* s) { return str2str(s, UTF8, getACS()); }

std::string acs2utf8(std::string s) {
    return getACS() == UTF8 ? std::move(s) : str2str(s, getACS(), UTF8);
}

std::string acs2utf8(const char* s) { return str2str(s, getACS(), UTF8); }

std::string strcodes(std::string_view s) {
    std::string codes;
    for (const char c : s) {
        codes += std::to_string(static_cast<signed char>(c)) + ' ';
    }
    return codes;
}

}  // namespace corvane::strconv
