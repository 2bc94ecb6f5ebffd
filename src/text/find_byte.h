// Searching a text for one of several bytes with the vector instructions of the processor (a
// compiler extension that gcc and clang share), for texts that may be large and seldom hold one.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace corvane {

using ByteVector [[gnu::vector_size(16)]] = unsigned char;

/// All bits are set in the bytes that are `c`, none in the others.
inline ByteVector bytesEqual(ByteVector bytes, char c) {
    return reinterpret_cast<ByteVector>(bytes == static_cast<unsigned char>(c));
}

/// The place, from `at` on, of the first block of so many vectors that holds a wanted byte, or of
/// the rest that is shorter than a block.
template <std::size_t vectors, typename AmongVector>
std::size_t skipBlocks(std::string_view text, std::size_t at, AmongVector among) {
    constexpr std::size_t blockSize = vectors * sizeof(ByteVector);
    for (; text.size() - at >= blockSize; at += blockSize) {
        ByteVector found{};
        for (std::size_t i = 0; i < vectors; ++i) {
            ByteVector bytes;
            std::memcpy(&bytes, text.data() + at + i * sizeof bytes, sizeof bytes);
            found |= among(bytes);
        }
        std::array<std::uint64_t, 2> halves{};
        static_assert(sizeof halves == sizeof found);
        std::memcpy(halves.data(), &found, sizeof found);
        if ((halves[0] | halves[1]) != 0) {
            return at;
        }
    }
    return at;
}

/// The place of the first wanted byte, or the size of the text. `isWanted` tells whether a
/// character is wanted, `among` marks the wanted ones of a vector with bits that are set.
template <typename AmongVector, typename IsWanted>
std::size_t findByte(std::string_view text, AmongVector among, IsWanted isWanted) {
    const std::size_t at = skipBlocks<1>(text, skipBlocks<4>(text, 0, among), among);
    const auto* const found = std::find_if(text.begin() + at, text.end(), isWanted);
    return static_cast<std::size_t>(found - text.begin());
}

}  // namespace corvane
