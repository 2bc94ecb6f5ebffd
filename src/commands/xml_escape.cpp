#include "commands/xml_escape.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace corvane {
namespace {

bool isSpecial(char c) {
    return c == '&' || c == '<' || c == '>' || c == '"' || c == '\'' || c == '\0';
}

// The name of the entity for a special character; null for NUL, which has none.
const char* entityName(char c) {
    switch (c) {
        case '&':
            return "amp";
        case '<':
            return "lt";
        case '>':
            return "gt";
        case '"':
            return "quot";
        case '\'':
            return "apos";
        default:
            return nullptr;
    }
}

// Text is searched a block at a time with the vector instructions of the processor (a compiler
// extension that gcc and clang share); only a block that holds a special character is looked at one
// by one.
using Vector [[gnu::vector_size(16)]] = unsigned char;

Vector equals(Vector bytes, char c) {
    return reinterpret_cast<Vector>(bytes == static_cast<unsigned char>(c));
}

// Two pairs of the special characters differ in one bit each and are compared as one: '&' and '\''
// in the lowest, '<' and '>' in the second.
Vector specialBytes(const char* bytes) {
    Vector v;
    std::memcpy(&v, bytes, sizeof v);
    return equals(v | 1, '\'') | equals(v | 2, '>') | equals(v, '"') | equals(v, '\0');
}

template <std::size_t vectors>
bool blockHasSpecial(const char* block) {
    Vector found = specialBytes(block);
    for (std::size_t i = 1; i < vectors; ++i) {
        found |= specialBytes(block + i * sizeof(Vector));
    }
    std::array<std::uint64_t, 2> halves{};
    static_assert(sizeof halves == sizeof found);
    std::memcpy(halves.data(), &found, sizeof found);
    return (halves[0] | halves[1]) != 0;
}

// Adds to `at` the blocks from there on that hold no special character.
template <std::size_t vectors>
std::size_t skipPlainBlocks(std::string_view text, std::size_t at) {
    constexpr std::size_t blockSize = vectors * sizeof(Vector);
    while (text.size() - at >= blockSize && !blockHasSpecial<vectors>(text.data() + at)) {
        at += blockSize;
    }
    return at;
}

// How many characters at the start of `text` need no escaping.
std::size_t plainRun(std::string_view text) {
    const std::size_t at = skipPlainBlocks<1>(text, skipPlainBlocks<4>(text, 0));
    const auto* const found = std::find_if(text.begin() + at, text.end(), isSpecial);
    return static_cast<std::size_t>(found - text.begin());
}

// Hands `plain` the runs that stay as they are and `entity` the names of those between them.
template <typename Plain, typename Entity>
void forEachRun(std::string_view text, Plain plain, Entity entity) {
    while (!text.empty()) {
        const std::size_t run = plainRun(text);
        plain(text.substr(0, run));
        if (run == text.size()) {
            return;
        }
        if (const char* name = entityName(text[run]); name != nullptr) {
            entity(name);
        }
        text.remove_prefix(run + 1);
    }
}

std::string_view bytes(const char* text, int length) {
    return {text, static_cast<std::size_t>(std::max(length, 0))};
}

}  // namespace

void appendEscaped(std::string_view text, std::string& out) {
    forEachRun(
        text, [&out](std::string_view run) { out += run; },
        [&out](const char* name) { writeEscapeTag(nullptr, &out, name); });
}

void escapeXml(const char* text, int length, std::ostream* out, std::string* str) {
    if (out == nullptr) {
        appendEscaped(bytes(text, length), *str);
    } else {
        escapeXml(text, length, *out);
    }
}

void escapeXml(const char* text, int length, std::ostream& out) {
    forEachRun(
        bytes(text, length),
        [&out](std::string_view run) {
            out.write(run.data(), static_cast<std::streamsize>(run.size()));
        },
        [&out](const char* name) { writeEscapeTag(out, name); });
}

void writeEscapeTag(std::ostream* out, std::string* str, const char* name) {
    if (out != nullptr) {
        writeEscapeTag(*out, name);
    } else {
        *str += '&';
        *str += name;
        *str += ';';
    }
}

void writeEscapeTag(std::ostream& out, const char* name) { out << '&' << name << ';'; }

void writeStringN(std::ostream* out, std::string* str, const char* text, int n) {
    const std::string_view plain = bytes(text, n);
    if (out != nullptr) {
        out->write(plain.data(), static_cast<std::streamsize>(plain.size()));
    } else {
        *str += plain;
    }
}

}  // namespace corvane
