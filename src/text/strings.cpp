#include "text/strings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include "text/exception.h"

namespace corvane {

namespace {

constexpr std::size_t FIRST_BUFFER = 1024;

// Libraries of today report the needed length, so a result that stays negative is an argument that
// cannot be converted; growing without end would only use up the memory.
constexpr std::size_t LARGEST_GUESS = std::size_t{1} << 20;

[[gnu::format(printf, 3, 0)]] int formatInto(char* buffer, std::size_t size, const char* fmt,
                                             va_list args) {
    va_list copy;
    va_copy(copy, args);
    const int length = std::vsnprintf(buffer, size, fmt, copy);
    va_end(copy);
    return length;
}

}  // namespace

std::string format(const char* fmt, ...) {
    std::string out;
    va_list args;
    va_start(args, fmt);
    try {
        out = formatvl(fmt, args);
    } catch (...) {
        va_end(args);
        throw;
    }
    va_end(args);
    return out;
}

std::string formatvl(const char* fmt, va_list args) {
    std::array<char, FIRST_BUFFER> first;
    int length = formatInto(first.data(), first.size(), fmt, args);
    if (length >= 0 && static_cast<std::size_t>(length) < first.size()) {
        return first.data();
    }
    std::size_t size = FIRST_BUFFER;
    std::vector<char> buffer;
    while (length < 0 || static_cast<std::size_t>(length) >= size) {
        size = length < 0 ? size * 2 : static_cast<std::size_t>(length) + 1;
        if (length < 0 && size > LARGEST_GUESS) {
            throw Exception(std::string("Cannot format the text '") + fmt + "'");
        }
        buffer.resize(size);
        length = formatInto(buffer.data(), size, fmt, args);
    }
    return buffer.data();
}

void _formatvl(const char* fmt, va_list args, std::string& out) { out = formatvl(fmt, args); }

std::string toString(long number) { return std::to_string(number); }

long toLong(const char* s, long def) {
    if (s == nullptr) {
        return def;
    }
    char* end = nullptr;
    const long number = std::strtol(s, &end, 10);
    return end == s ? def : number;
}

long toLong(const std::string& s, long def) { return toLong(s.c_str(), def); }

bool toBool(const char* s, bool def) {
    if (s == nullptr) {
        return def;
    }
    const std::string_view text = s;
    if (text == "true" || text == "false") {
        return text == "true";
    }
    return toLong(s, def ? 1 : 0) != 0;
}

bool toBool(const std::string& s, bool def) { return toBool(s.c_str(), def); }

std::string trim(std::string_view s, std::string_view set) {
    const std::size_t first = s.find_first_not_of(set);
    if (first == std::string_view::npos) {
        return std::string(s);
    }
    const std::size_t last = s.find_last_not_of(set);
    return std::string(s.substr(first, last - first + 1));
}

std::vector<std::string> strExplode(std::string_view s, std::string_view sep) {
    std::vector<std::string> pieces;
    std::size_t match = s.find_first_of(sep);
    while (match != std::string_view::npos) {
        pieces.emplace_back(s.substr(0, match));
        s.remove_prefix(std::min(match + sep.size(), s.size()));
        match = s.find_first_of(sep);
    }
    pieces.emplace_back(s);
    return pieces;
}

std::string strImplde(const std::vector<std::string>& items, std::string_view sep) {
    std::string joined;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) {
            joined += sep;
        }
        joined += items[i];
    }
    return joined;
}

std::string strreplace(std::string_view s, std::string_view what, std::string_view with) {
    std::string replaced;
    replaced.reserve(s.size());
    std::size_t match = s.find_first_of(what);
    while (match != std::string_view::npos) {
        replaced += s.substr(0, match);
        replaced += with;
        s.remove_prefix(std::min(match + what.size(), s.size()));
        match = s.find_first_of(what);
    }
    replaced += s;
    return replaced;
}

bool startsWith(std::string_view s, std::string_view prefix) { return s.starts_with(prefix); }

bool endsWith(std::string_view s, std::string_view suffix) { return s.ends_with(suffix); }

}  // namespace corvane
