// A growing byte buffer for requests and replies of any size. Unlike std::string it never fills new
// room with zeros, and it grows through realloc, which moves large blocks only when it has to.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

namespace corvane {

class ByteBuffer {
  public:
    ByteBuffer() = default;
    ~ByteBuffer() = default;
    ByteBuffer(ByteBuffer&& other) noexcept
        : bytes_(std::move(other.bytes_)),
          size_(std::exchange(other.size_, 0)),
          capacity_(std::exchange(other.capacity_, 0)) {}
    ByteBuffer& operator=(ByteBuffer&& other) noexcept {
        bytes_ = std::move(other.bytes_);
        size_ = std::exchange(other.size_, 0);
        capacity_ = std::exchange(other.capacity_, 0);
        return *this;
    }
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;

    const char* data() const { return bytes_.get(); }
    std::size_t size() const { return size_; }
    /// How many bytes it has room for without growing.
    std::size_t capacity() const { return capacity_; }
    std::string_view view() const { return {bytes_.get(), size_}; }

    /// Makes room for at least `count` more bytes and returns where they go; commit() then counts
    /// those that were written. Throws IOException with ENOMEM when memory is short.
    char* room(std::size_t count) {
        if (count > capacity_ - size_) {
            grow(count);
        }
        return bytes_.get() + size_;
    }
    void commit(std::size_t count) { size_ += count; }

    void append(std::string_view text) {
        if (!text.empty()) {
            std::memcpy(room(text.size()), text.data(), text.size());
            commit(text.size());
        }
    }

    void clear() { size_ = 0; }
    /// Removes the first `count` bytes, of those that it holds.
    void dropFront(std::size_t count) {
        if (count != 0) {
            size_ -= count;
            std::memmove(bytes_.get(), bytes_.get() + count, size_);
        }
    }

    /// Empties the buffer and gives its memory back when it holds more than `limit` bytes of room.
    void clearAndShrink(std::size_t limit);

  private:
    struct Free {
        void operator()(char* block) const { std::free(block); }  // NOLINT: pairs with realloc
    };

    void grow(std::size_t count);

    std::unique_ptr<char, Free> bytes_;
    std::size_t size_ = 0;
    std::size_t capacity_ = 0;
};

}  // namespace corvane
