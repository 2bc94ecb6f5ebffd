// Flash movies, as far as their size goes, made byte by byte.
#pragma once

#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>

namespace corvane::test {

/// The frame rectangle of a movie in twips: the width of its four fields in bits (0 to 31) and
/// their values, xMin, xMax, yMin, yMax, of which the lowest bits are written.
struct MovieRect {
    unsigned bits;
    std::array<std::uint32_t, 4> edges;
};

inline std::string packed(const MovieRect& rect) {
    std::string digits;
    const auto put = [&digits](std::uint32_t value, unsigned bits) {
        for (unsigned bit = bits; bit > 0; --bit) {
            digits += (value >> (bit - 1) & 1U) != 0 ? '1' : '0';
        }
    };
    put(rect.bits, 5);
    for (const std::uint32_t edge : rect.edges) {
        put(edge, rect.bits);
    }
    std::string bytes;
    for (std::size_t at = 0; at < digits.size(); at += 8) {
        unsigned value = 0;
        for (std::size_t bit = 0; bit < 8; ++bit) {
            value = value << 1U | (at + bit < digits.size() && digits[at + bit] == '1' ? 1U : 0U);
        }
        bytes += static_cast<char>(value);
    }
    return bytes;
}

/// The first 8 bytes; `length` is that of the whole uncompressed movie.
inline std::string movieHeader(const std::string& signature, std::uint64_t length) {
    std::string header = signature + '\x06';
    for (unsigned shift = 0; shift < 32; shift += 8) {
        header += static_cast<char>(length >> shift & 0xFFU);
    }
    return header;
}

inline std::string compressed(const std::string& body) {
    uLongf size = ::compressBound(static_cast<uLong>(body.size()));
    std::string out(size, '\0');
    ::compress(reinterpret_cast<Bytef*>(out.data()), &size,
               reinterpret_cast<const Bytef*>(body.data()), static_cast<uLong>(body.size()));
    out.resize(size);
    return out;
}

inline std::string plainMovie(const std::string& body) {
    return movieHeader("FWS", body.size() + 8) + body;
}

inline std::string compressedMovie(const std::string& body) {
    return movieHeader("CWS", body.size() + 8) + compressed(body);
}

}  // namespace corvane::test
