// The server's replies as tests expect them, built independently of the server's own writer. None
// has the zero byte that ends it on the wire.
#pragma once

#include <string>

namespace corvane::test {

/// A detail with its value in an attribute.
inline std::string detail(const std::string& id, const std::string& value) {
    return "<Detail id=\"" + id + "\" extra=\"\" Value=\"" + value + "\" />";
}

/// The detail that most queries are answered with.
inline std::string valueDetail(const std::string& value) { return detail("value", value); }

/// The detail with the text of a file, which stands in the reply with its markup escaped.
inline std::string textDetail(const std::string& text) {
    return "<Detail id=\"text\" extra=\"\">" + text + "</Detail>";
}

/// Any reply. `attributes` begins with a blank when it is not empty.
inline std::string replyText(const std::string& action, const std::string& result,
                             const std::string& attributes, const std::string& details) {
    return "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"" + action + "\" Result=\"" +
           result + "\"" + attributes + ">" + details + "</Header></CorvaneMsg>";
}

inline std::string hintAttribute(const std::string& hint) {
    return hint.empty() ? "" : " hint=\"" + hint + "\"";
}

/// The reply to a command that succeeded.
inline std::string success(const std::string& action, const std::string& details = "",
                           const std::string& hint = "") {
    return replyText(action, "SUCCESS", hintAttribute(hint), details);
}

/// The reply to a command that failed, or that the server does not know.
inline std::string failure(const std::string& action, const std::string& hint = "") {
    return replyText(action, "FAILED", hintAttribute(hint), "");
}

}  // namespace corvane::test
