#include "launch/movie_size.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <span>

#include "platform/guarded_open.h"
#include "platform/io.h"
#include "platform/waiting.h"

namespace corvane {
namespace {

using Byte = unsigned char;

constexpr MovieSize defaultSize{800, 600};
constexpr std::size_t headerSize = 8;
// The largest RECT: 5 bits for the field size and four fields of 31 bits.
constexpr std::size_t largestRect = (5 + 4 * 31 + 7) / 8;
constexpr int twipsPerPixel = 20;
constexpr std::size_t inflateBlock = std::size_t{64} * 1024;

using Rect = std::array<Byte, largestRect>;

// Fills the buffer as far as the file reaches and can be read. Returns the number of bytes.
std::size_t readUpTo(int fd, std::span<Byte> buffer) {
    const auto room = std::as_writable_bytes(buffer);
    const ssize_t count = readAll(fd, std::span(reinterpret_cast<char*>(room.data()), room.size()));
    return count == -1 ? 0 : static_cast<std::size_t>(count);
}

// Reads unsigned fields from a byte sequence, most significant bit first.
class BitReader {
  public:
    explicit BitReader(std::span<const Byte> bytes) : bytes_(bytes) {}

    // Nothing when the bytes end before the field.
    std::optional<std::uint32_t> field(unsigned bits) {
        if (position_ + bits > bytes_.size() * 8) {
            return std::nullopt;
        }
        std::uint32_t value = 0;
        for (unsigned i = 0; i < bits; ++i, ++position_) {
            const unsigned bit = (bytes_[position_ / 8] >> (7 - position_ % 8)) & 1U;
            value = (value << 1) | bit;
        }
        return value;
    }

  private:
    std::span<const Byte> bytes_;
    std::size_t position_ = 0;
};

MovieSize sizeOf(std::span<const Byte> rect) {
    BitReader reader(rect);
    const unsigned bits = reader.field(5).value_or(0);
    std::array<std::optional<std::uint32_t>, 4> edges;
    for (auto& edge : edges) {
        edge = reader.field(bits);
    }
    const auto& [xMin, xMax, yMin, yMax] = edges;
    if (rect.empty() || !yMax) {
        return defaultSize;
    }
    return {static_cast<std::int32_t>(*xMax - *xMin) / twipsPerPixel,
            static_cast<std::int32_t>(*yMax - *yMin) / twipsPerPixel};
}

// A zlib stream that is inflated only to see whether it is whole, keeping its first bytes.
class Inflater {
  public:
    Inflater() : ready_(::inflateInit(&stream_) == Z_OK) {}
    ~Inflater() { ::inflateEnd(&stream_); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
    Inflater(Inflater&&) = delete;
    Inflater& operator=(Inflater&&) = delete;

    // The first bytes of what `fd` holds from its offset on, or nothing when that is not one
    // complete zlib stream of at most `capacity` bytes, or when the program has to stop.
    std::optional<std::size_t> inflateAll(int fd, std::uint64_t capacity, Rect& first) {
        int status = ready_ ? Z_OK : Z_MEM_ERROR;
        while (status == Z_OK || status == Z_BUF_ERROR) {
            const bool needsInput = stream_.avail_in == 0;
            if (needsInput) {
                stream_.next_in = input_.data();
                stream_.avail_in = static_cast<uInt>(readUpTo(fd, input_));
            }
            if (needsInput && stream_.avail_in == 0 && status == Z_BUF_ERROR) {
                return std::nullopt;  // the file ends before the stream
            }
            stream_.next_out = output_.data();
            stream_.avail_out = static_cast<uInt>(output_.size());
            status = ::inflate(&stream_, Z_NO_FLUSH);
            keep(output_.size() - stream_.avail_out, first);
            if (total_ > capacity || interrupted()) {
                return std::nullopt;
            }
        }
        return status == Z_STREAM_END ? std::optional(kept_) : std::nullopt;
    }

  private:
    void keep(std::size_t produced, Rect& first) {
        const std::size_t wanted = std::min(produced, first.size() - kept_);
        std::memcpy(first.data() + kept_, output_.data(), wanted);
        kept_ += wanted;
        total_ += produced;
    }

    z_stream stream_{};
    bool ready_;
    std::array<Byte, inflateBlock> input_{};
    std::array<Byte, inflateBlock> output_{};
    std::size_t kept_ = 0;
    std::uint64_t total_ = 0;
};

std::uint32_t littleEndian(const Byte* bytes) {
    return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
           std::uint32_t{bytes[3]} << 24;
}

}  // namespace

MovieSize readSWFSize(const char* swfPath) {
    const OpenedFile opened = openGuarded(AT_FDCWD, swfPath, O_RDONLY);
    if (opened.fd == -1 || !S_ISREG(opened.info.st_mode)) {
        return defaultSize;
    }
    const int file = opened.fd;
    std::array<Byte, headerSize> header{};
    if (readUpTo(file, header) < header.size()) {
        return defaultSize;
    }
    Rect rect{};
    if (header[0] != 'C') {
        return sizeOf(std::span(rect).first(readUpTo(file, rect)));
    }
    const std::uint32_t length = littleEndian(&header[4]);
    if (length < headerSize) {
        return defaultSize;
    }
    const auto kept = Inflater().inflateAll(file, length - headerSize, rect);
    return kept ? sizeOf(std::span(rect).first(*kept)) : defaultSize;
}

}  // namespace corvane
