// The frame size of movies, plain and compressed, against a reader that holds the whole file and
// lets zlib inflate it in one call.
#include <zlib.h>

#include <optional>

#include "fuzz/fuzz_target.h"
#include "fuzz/scratch.h"
#include "launch/movie_size.h"

namespace {

using namespace corvane;

constexpr MovieSize unknownSize{800, 600};
constexpr std::size_t headerSize = 8;
// The plain reader really allocates what a header claims, up to here.
constexpr std::uint32_t largestClaim = 4 * 1024 * 1024;

std::uint32_t byteAt(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

std::optional<std::uint32_t> bitsAt(std::string_view bytes, std::size_t at, std::size_t count) {
    if (at + count > bytes.size() * 8) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (std::size_t i = at; i < at + count; ++i) {
        value = value * 2 + (byteAt(bytes, i / 8) >> (7 - i % 8)) % 2;
    }
    return value;
}

MovieSize sizeOfFrame(std::string_view rect) {
    const auto width = bitsAt(rect, 0, 5);
    if (!width || !bitsAt(rect, 5, std::size_t{4} * *width)) {
        return unknownSize;
    }
    const auto edge = [&](std::size_t i) { return *bitsAt(rect, 5 + i * *width, *width); };
    return {static_cast<std::int32_t>(edge(1) - edge(0)) / 20,
            static_cast<std::int32_t>(edge(3) - edge(2)) / 20};
}

// Nothing when the plain reader would need too much memory to tell.
std::optional<MovieSize> expectedSize(std::string_view file) {
    if (file.size() < headerSize) {
        return unknownSize;
    }
    const std::string_view body = file.substr(headerSize);
    if (file[0] != 'C') {
        return sizeOfFrame(body);
    }
    const std::uint32_t length =
        byteAt(file, 4) | byteAt(file, 5) << 8 | byteAt(file, 6) << 16 | byteAt(file, 7) << 24;
    if (length < headerSize) {
        return unknownSize;
    }
    if (length > largestClaim) {
        return std::nullopt;
    }
    std::string frame(length - headerSize, '\0');
    uLongf inflated = frame.size();
    const int status = ::uncompress(reinterpret_cast<Bytef*>(frame.data()), &inflated,
                                    reinterpret_cast<const Bytef*>(body.data()), body.size());
    return status == Z_OK ? sizeOfFrame(std::string_view(frame).substr(0, inflated)) : unknownSize;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file = fuzz::asText(data, size);
    const MovieSize found = readSWFSize(fuzz::scratchFile(file).c_str());
    const std::optional<MovieSize> expected = expectedSize(file);
    fuzz::require(!expected || found == *expected, "the frame size is that of the header");
    return 0;
}
