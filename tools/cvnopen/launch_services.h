// Opening things with the applications that macOS has for them, through Launch Services.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace corvane::cvnopen {

/// Opens a web address in UTF-8. Returns the status of Launch Services, 0 for success, or nothing
/// when the text is not a valid address.
std::optional<std::int32_t> openAddress(const std::string& address);

/// Opens a document or bundle with its default application; failures are ignored.
void openDocument(const std::string& path);

}  // namespace corvane::cvnopen
