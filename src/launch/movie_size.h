// The size of a Flash movie, read from the header of its file.
#pragma once

#include <cstdint>

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
/// bounded whatever the header claims. Signals are let in while a long body is inflated; a request
/// to stop ends that, with the size of a body that does not inflate.
MovieSize readSWFSize(const char* swfPath);

}  // namespace corvane
