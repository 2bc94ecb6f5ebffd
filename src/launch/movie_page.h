// HTML pages that show a Flash movie in its own size: reading the size from the movie's header and
// writing the page.
#pragma once

#include <cstdint>
#include <string>

namespace corvane {

/// A movie's frame in whole pixels.
struct MovieSize {
    std::int32_t width;
    std::int32_t height;

    bool operator==(const MovieSize&) const = default;
};

/// The frame size from the header of a movie, plain or zlib-compressed (SWF file format: the RECT
/// record at byte 8, in twips of 1/20 pixel). 800 x 600 for a file that is missing or too short,
/// and for a compressed body that does not inflate to the length that its header tells. Memory is
/// bounded whatever the header claims.
MovieSize readSWFSize(const char* swfPath);

/// Writes a page that embeds the movie by its path as given, into a new temporary file that only
/// its owner can read. Returns the path of the page, which ends with ".html" and stays
/// for the browser to load. Throws IOException when it cannot be written.
std::string convertSWF(const char* swfPath);

}  // namespace corvane
