#include "reply/xml_escape.h"

#include <algorithm>
#include <cstddef>

#include "text/find_byte.h"

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

// Two pairs of the special characters differ in one bit each and are compared as one: '&' and '\''
// in the lowest, '<' and '>' in the second.
ByteVector specialAmong(ByteVector bytes) {
    return bytesEqual(bytes | 1, '\'') | bytesEqual(bytes | 2, '>') | bytesEqual(bytes, '"') |
           bytesEqual(bytes, '\0');
}

// Hands `plain` the runs that stay as they are and `entity` the names of those between them.
template <typename Plain, typename Entity>
void forEachRun(std::string_view text, Plain plain, Entity entity) {
    while (!text.empty()) {
        const std::size_t run = findByte(text, specialAmong, isSpecial);
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
