#include "platform/io.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "platform/waiting.h"

namespace corvane {
namespace {

// An error or a hang-up counts as well: the next call tells of it.
bool isWritable(int fd) {
    pollfd wanted{fd, POLLOUT, 0};
    return ::poll(&wanted, 1, 0) != 0;
}

// Waits until it may be worth trying again. False with EINTR when the program has to stop.
bool waitForRoom(int fd) {
    if (!interrupted()) {
        waitForSocket(fd, Direction::Write, {});
    }
    if (interrupted()) {
        errno = EINTR;
        return false;
    }
    return true;
}

}  // namespace

ssize_t readSome(int fd, std::span<char> room) {
    ssize_t count = 0;
    do {
        count = ::read(fd, room.data(), room.size());
    } while (count == -1 && errno == EINTR);
    return count;
}

ssize_t readAll(int fd, std::span<char> room) {
    std::size_t total = 0;
    while (total < room.size()) {
        const ssize_t count = readSome(fd, room.subspan(total));
        if (count == -1) {
            return -1;
        }
        if (count == 0) {
            break;
        }
        total += static_cast<std::size_t>(count);
    }
    return static_cast<ssize_t>(total);
}

bool writeAll(int fd, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(fd, bytes.data(), bytes.size());
        if (written == 0) {  // by a driver; trying again could go on for ever
            errno = EIO;
            return false;
        }
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (errno == EAGAIN) {
            if (!waitForRoom(fd)) {
                return false;
            }
        } else if (errno != EINTR) {
            return false;
        }
    }
    return true;
}

bool letCloseDrain(int fd) {
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags == -1) {
        return false;
    }
    while (!isWritable(fd)) {
        if (!waitForRoom(fd)) {
            return false;
        }
    }
    return ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

}  // namespace corvane
