// The lines of a request: the command's name and its parameters.
#include <algorithm>
#include <array>
#include <string>

#include "server/server.h"

namespace corvane {
namespace {

constexpr std::size_t longestLine = 1023;

// Every CR and LF at the end, not only one of each.
std::string withoutLineEnd(std::string_view line) {
    return std::string(line.substr(0, line.find_last_not_of("\r\n") + 1));
}

}  // namespace

std::string Server::getline(std::istream& in) {
    std::array<char, longestLine + 1> line;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    return in.getline(line.data(), line.size()) ? withoutLineEnd(line.data()) : "";
}

std::optional<std::string> Server::takeLine(std::string_view& text) {
    const std::size_t length = std::min(text.find('\n'), text.size());
    if (text.empty() || length > longestLine) {
        return std::nullopt;
    }
    const std::string_view line = text.substr(0, length);
    text.remove_prefix(std::min(length + 1, text.size()));
    return withoutLineEnd(line);
}

}  // namespace corvane
