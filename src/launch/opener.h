// Opens web addresses and documents with the desktop's own applications, and tells in the words of
// the macOS functions what went wrong, whatever the system.
#pragma once

#include <string>

namespace corvane {

/// Opens a web address (any target that contains ":/"). Throws Exception
/// "Cannot create CFURLRef for '%s'" when the text is not a valid address and IOException
/// "LSOpenCFURLRef error for file '%s'" with the opener's status as code when it cannot be opened.
void openAddress(const std::string& target);

/// Opens a document or bundle with its default application; failures are ignored.
void openDocument(const std::string& path);

}  // namespace corvane
