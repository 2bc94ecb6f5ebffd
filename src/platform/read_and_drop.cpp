#include "platform/read_and_drop.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>

namespace corvane::platform {

ssize_t readAndDrop(int sock, std::size_t count) {
    constexpr std::size_t blockSize = std::size_t{16} * 1024;
    std::array<char, blockSize> block;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    std::size_t total = 0;
    while (total < count) {
        const ssize_t got =
            ::recv(sock, block.data(), std::min(count - total, block.size()), MSG_DONTWAIT);
        if (got <= 0) {
            return total > 0 ? static_cast<ssize_t>(total) : got;
        }
        total += static_cast<std::size_t>(got);
    }
    return static_cast<ssize_t>(total);
}

}  // namespace corvane::platform
