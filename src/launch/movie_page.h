// HTML pages that show a Flash movie in its own size.
#pragma once

#include <string>

namespace corvane {

/// Writes a page that embeds the movie by its path as given, into a new temporary file that only
/// its owner can read. Returns the path of the page, which ends with ".html" and stays
/// for the browser to load. Throws IOException when it cannot be written.
std::string convertSWF(const char* swfPath);

}  // namespace corvane
