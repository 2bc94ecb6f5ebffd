#include "corvanectl/json.h"

#include "corvanectl/utf8.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view replacement = "\\ufffd";

void appendCharacter(std::string_view character, std::string& out) {
    const auto first = static_cast<unsigned char>(character.front());
    if (first == '"' || first == '\\') {
        out += '\\';
        out += character;
    } else if (first < 0x20 || first == 0x7f) {
        out += format("\\u%04x", first);
    } else {
        out += character;
    }
}

std::string hexDigits(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string hex;
    hex.reserve(bytes.size() * 2);
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        hex += digits[byte >> 4];
        hex += digits[byte & 0xf];
    }
    return hex;
}

// Puts `"name":"value"` behind the members that are there.
void addMember(std::string_view name, std::string_view value, std::string& object) {
    object += object.back() == '{' ? "" : ",";
    object += concatenate("\"", name, "\":", jsonString(value));
    if (!isUtf8(value)) {
        object += concatenate(",\"", name, "Hex\":\"", hexDigits(value), "\"");
    }
}

void addIfAny(std::string_view name, std::string_view value, std::string& object) {
    if (!value.empty()) {
        addMember(name, value, object);
    }
}

std::string toJson(const ReplyDetail& detail) {
    std::string object = "{";
    addMember("id", detail.id, object);
    addIfAny("extra", detail.extra, object);
    addIfAny("date", detail.date, object);
    addIfAny("size", detail.size, object);
    addMember("value", detail.value, object);
    return object + "}";
}

}  // namespace

std::string jsonString(std::string_view text) {
    std::string out = "\"";
    out.reserve(text.size() + 2);
    while (!text.empty()) {
        const std::size_t size = utf8Length(text);
        if (size == 0) {
            out += replacement;
        } else {
            appendCharacter(text.substr(0, size), out);
        }
        text.remove_prefix(size == 0 ? 1 : size);
    }
    return out + '"';
}

std::string toJson(std::string_view command, const Reply& reply) {
    std::string object = "{";
    addMember("command", command, object);
    addMember("result", reply.ok ? "SUCCESS" : "FAILED", object);
    if (reply.errnoValue) {
        object += format(",\"errno\":%d", *reply.errnoValue);
    }
    addIfAny("hint", reply.hint, object);
    object += ",\"details\":[";
    for (const ReplyDetail& detail : reply.details) {
        object += concatenate(&detail == &reply.details.front() ? "" : ",", toJson(detail));
    }
    return object + "]}";
}

}  // namespace corvane::ctl
