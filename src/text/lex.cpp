#include "text/lex.h"

#include <algorithm>
#include <array>

#include "text/strconv.h"

namespace corvane {

namespace {

struct LexData {
    std::uint16_t code;
    std::uint16_t upper;
    std::uint16_t lower;
    std::uint16_t key;
};

// The characters that do not sort by their code, sorted by code. A key is the code of the character
// that comes before, followed by one byte that orders the characters with the same predecessor.
constexpr std::array<LexData, 19> LEX_DATA{{
    {0x005F, 0x005F, 0x005F, 0x2E01}, {0x00D3, 0x00D3, 0x00F3, 0x4F01},
    {0x00F3, 0x00D3, 0x00F3, 0x6F01}, {0x0104, 0x0104, 0x0105, 0x4101},
    {0x0105, 0x0104, 0x0105, 0x6101}, {0x0106, 0x0106, 0x0107, 0x4301},
    {0x0107, 0x0106, 0x0107, 0x6301}, {0x0118, 0x0118, 0x0119, 0x4501},
    {0x0119, 0x0118, 0x0119, 0x6501}, {0x0141, 0x0141, 0x0142, 0x4C01},
    {0x0142, 0x0141, 0x0142, 0x6C01}, {0x0143, 0x0143, 0x0144, 0x4E01},
    {0x0144, 0x0143, 0x0144, 0x6E01}, {0x015A, 0x015A, 0x015B, 0x5301},
    {0x015B, 0x015A, 0x015B, 0x7301}, {0x0179, 0x0179, 0x017A, 0x5A01},
    {0x017A, 0x0179, 0x017A, 0x7A01}, {0x017B, 0x017B, 0x017C, 0x5A02},
    {0x017C, 0x017B, 0x017C, 0x7A02},
}};

constexpr std::uint32_t CASE_BIT = 0x20;

const LexData* findRow(wchar_t c) {
    // Most characters of a file name are ASCII, which has one row only.
    if (c < 0x80) {
        return c == L'_' ? LEX_DATA.data() : nullptr;
    }
    const auto row =
        std::lower_bound(LEX_DATA.begin(), LEX_DATA.end(), c,
                         [](const LexData& data, wchar_t wanted) { return data.code < wanted; });
    return row != LEX_DATA.end() && row->code == c ? &*row : nullptr;
}

// Takes the next character off `text`, past what is not decodable; false at the end.
bool nextCharacter(std::string_view& text, wchar_t& c) {
    while (!text.empty()) {
        const std::size_t used = strconv::utf8char2wchar(text, c);
        text.remove_prefix(std::max<std::size_t>(used, 1));
        if (used > 0) {
            return true;
        }
    }
    return false;
}

void appendBigEndian(std::string& out, std::uint32_t number, int bytes) {
    for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8) {
        out += static_cast<char>(number >> shift & 0xFFU);
    }
}

}  // namespace

std::uint32_t lex_coll(wchar_t c) {
    const LexData* const row = findRow(c);
    return row != nullptr ? row->key : static_cast<std::uint32_t>(c) << 8;
}

std::uint32_t lex_icoll(wchar_t c) {
    const LexData* const row = findRow(c);
    return row != nullptr ? row->key | CASE_BIT << 8
                          : (static_cast<std::uint32_t>(c) | CASE_BIT) << 8;
}

int lex_strcmp_coll(const char* a, const char* b, LexOrder key) {
    if (a == nullptr || b == nullptr) {
        return (a != nullptr ? 1 : 0) - (b != nullptr ? 1 : 0);
    }
    return lex_strcmp_coll(std::string_view(a), std::string_view(b), key);
}

int lex_strcmp_coll(std::string_view a, std::string_view b, LexOrder key) {
    for (;;) {
        wchar_t charOfA = 0;
        wchar_t charOfB = 0;
        const bool hasA = nextCharacter(a, charOfA);
        const bool hasB = nextCharacter(b, charOfB);
        if (!hasA || !hasB) {
            return (hasA ? 1 : 0) - (hasB ? 1 : 0);
        }
        const std::uint32_t keyOfA = key(charOfA);
        const std::uint32_t keyOfB = key(charOfB);
        if (keyOfA != keyOfB) {
            return keyOfA < keyOfB ? -1 : 1;
        }
    }
}

int lex_strcmp(const char* a, const char* b) { return lex_strcmp_coll(a, b, lex_coll); }

int lex_strcmp(std::string_view a, std::string_view b) { return lex_strcmp_coll(a, b, lex_coll); }

int lex_stricmp(const char* a, const char* b) { return lex_strcmp_coll(a, b, lex_icoll); }

int lex_stricmp(std::string_view a, std::string_view b) { return lex_strcmp_coll(a, b, lex_icoll); }

// The place of an ASCII character becomes one odd byte, its rank among all of them. Any other place
// becomes the even byte between its neighbours, followed by the place itself.
SortKeyEncoder::SortKeyEncoder(LexOrder key) : key_(key) {
    constexpr std::size_t ranks = 127;  // so that every byte, twice the rank and one, fits
    for (std::size_t c = 0; c < ascii_.size(); ++c) {
        places_.push_back(key(static_cast<wchar_t>(c)));
    }
    std::sort(places_.begin(), places_.end());
    places_.erase(std::unique(places_.begin(), places_.end()), places_.end());
    places_.resize(std::min(places_.size(), ranks));
    for (std::size_t c = 0; c < ascii_.size(); ++c) {
        std::string bytes;
        appendPlace(key(static_cast<wchar_t>(c)), bytes);
        ascii_[c] = bytes.size() == 1 ? static_cast<unsigned char>(bytes.front()) : 0;
    }
}

void SortKeyEncoder::append(std::string_view text, std::string& bytes) const {
    wchar_t c = 0;
    appendAscii(text, bytes);
    while (nextCharacter(text, c)) {
        appendPlace(key_(c), bytes);
        appendAscii(text, bytes);
    }
}

// Takes the ASCII characters that a text begins with off it.
void SortKeyEncoder::appendAscii(std::string_view& text, std::string& bytes) const {
    const auto byteOf = [this](char c) {
        const auto number = static_cast<unsigned char>(c);
        return number < ascii_.size() ? static_cast<char>(ascii_[number]) : '\0';
    };
    const auto* const end =
        std::find_if(text.begin(), text.end(), [byteOf](char c) { return byteOf(c) == '\0'; });
    const auto count = static_cast<std::size_t>(end - text.begin());
    const std::size_t before = bytes.size();
    bytes.resize(before + count);
    std::transform(text.begin(), end, bytes.begin() + static_cast<std::ptrdiff_t>(before), byteOf);
    text.remove_prefix(count);
}

void SortKeyEncoder::appendPlace(std::uint32_t place, std::string& bytes) const {
    const auto next = std::lower_bound(places_.begin(), places_.end(), place);
    const auto rank = 2 * (next - places_.begin());
    if (next != places_.end() && *next == place) {
        bytes.push_back(static_cast<char>(rank + 1));
    } else {
        bytes.push_back(static_cast<char>(rank));
        appendBigEndian(bytes, place, 4);
    }
}

std::string sortKey(std::string_view text, LexOrder key) {
    std::string bytes;
    SortKeyEncoder(key).append(text, bytes);
    return bytes;
}

wchar_t lex_upper(wchar_t c) {
    if (c >= L'a' && c <= L'z') {
        return c & 0x1F;
    }
    const LexData* const row = findRow(c);
    return row != nullptr ? static_cast<wchar_t>(row->upper) : c;
}

wchar_t lex_lower(wchar_t c) {
    if (c >= L'A' && c <= L'Z') {
        return c | static_cast<wchar_t>(CASE_BIT);
    }
    const LexData* const row = findRow(c);
    return row != nullptr ? static_cast<wchar_t>(row->lower) : c;
}

}  // namespace corvane
