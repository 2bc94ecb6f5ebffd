// The escaping rule of the XML that the program writes: the five characters & < > " ' become
// entities, a NUL byte is dropped, everything else stays as it is.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace corvane {

/// Appends `text` escaped to `out`.
void appendEscaped(std::string_view text, std::string& out);

// The functions from here on are a provided interface; in the program only XmlWriter calls them.

/// Writes `length` bytes of `text` escaped to `out`, or appends them to `str` when `out` is null.
void escapeXml(const char* text, int length, std::ostream* out, std::string* str);
void escapeXml(const char* text, int length, std::ostream& out);

/// Writes the entity `name`, as "&name;", to the same targets.
void writeEscapeTag(std::ostream* out, std::string* str, const char* name);
void writeEscapeTag(std::ostream& out, const char* name);

/// Writes `n` bytes of `text` as they are to the same targets.
void writeStringN(std::ostream* out, std::string* str, const char* text, int n);

}  // namespace corvane
