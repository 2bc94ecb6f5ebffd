#include "text/byte_buffer.h"

#include <algorithm>
#include <cerrno>
#include <limits>

#include "text/exception.h"

namespace corvane {

void ByteBuffer::grow(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / 2 - size_) {
        throw IOException("not enough memory", ENOMEM);
    }
    const std::size_t wanted = std::max(size_ + count, capacity_ * 2);
    void* grown = std::realloc(bytes_.get(), wanted);  // NOLINT: owned by bytes_ again below
    if (grown == nullptr) {
        throw IOException("not enough memory", ENOMEM);
    }
    static_cast<void>(bytes_.release());
    bytes_.reset(static_cast<char*>(grown));
    capacity_ = wanted;
}

void ByteBuffer::clearAndShrink(std::size_t limit) {
    size_ = 0;
    if (capacity_ > limit) {
        bytes_.reset();
        capacity_ = 0;
    }
}

}  // namespace corvane
