// Reading and writing descriptors of any kind: the retries that read(2) and write(2) leave to their
// callers. Waits let signals in (platform/waiting.h) and end when the program has to stop.
#pragma once

#include <sys/types.h>

#include <span>
#include <string_view>

namespace corvane {

/// read(2), begun again after a signal. Returns the number of bytes, 0 at the end, or -1 with
/// errno: EAGAIN where a descriptor opened without waiting has nothing yet.
ssize_t readSome(int fd, std::span<char> room);

/// Reads until `room` is full or the end has come. Returns the number of bytes, or -1 with errno as
/// readSome() does; what was read before an error is in `room`, but its number is not known.
ssize_t readAll(int fd, std::span<char> room);

/// Writes all bytes. Where a descriptor opened without waiting takes no more, it waits until it
/// does, with signals let in. Returns false with errno; EINTR when the program has to stop
/// meanwhile, EIO for a device that takes nothing without an error.
bool writeAll(int fd, std::string_view bytes);

/// For a device opened without waiting, after its last byte: a driver may drop what is under way
/// when such a descriptor is closed. Waits, with signals let in, until the device takes more, and
/// clears O_NONBLOCK, so that close(2) waits for the rest. Returns false with errno; EINTR when the
/// program has to stop meanwhile.
bool letCloseDrain(int fd);

}  // namespace corvane
