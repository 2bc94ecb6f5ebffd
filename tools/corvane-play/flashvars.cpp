#include "corvane-play/flashvars.h"

#include <algorithm>

#include "corvane-play/percent.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

std::optional<std::string> decodedWithBlanks(std::string_view text) {
    std::string spaced(text);
    std::replace(spaced.begin(), spaced.end(), '+', ' ');
    return decodePercent(spaced);
}

}  // namespace

std::optional<Flashvars> parseFlashvars(std::string_view text) {
    Flashvars variables;
    while (!text.empty()) {
        const std::string_view piece = text.substr(0, text.find('&'));
        text.remove_prefix(std::min(piece.size() + 1, text.size()));
        const std::size_t equals = piece.find('=');
        auto name = decodedWithBlanks(piece.substr(0, equals));
        auto value = decodedWithBlanks(equals == std::string_view::npos ? std::string_view()
                                                                        : piece.substr(equals + 1));
        if (!name || !value || name->empty()) {
            return std::nullopt;
        }
        variables.emplace_back(std::move(*name), std::move(*value));
    }
    return variables;
}

std::string jsonString(std::string_view text) {
    constexpr unsigned char firstPrintable = 0x20;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            quoted += '\\';
            quoted += c;
        } else if (static_cast<unsigned char>(c) < firstPrintable || c == '<') {
            quoted += format("\\u%04x", static_cast<unsigned>(c));
        } else {
            quoted += c;
        }
    }
    return quoted + '"';
}

std::string jsonObject(const Flashvars& variables) {
    std::string object = "{";
    for (const auto& [name, value] : variables) {
        object +=
            concatenate(object.size() > 1 ? "," : "", jsonString(name), ":", jsonString(value));
    }
    return object + "}";
}

}  // namespace corvane::play
