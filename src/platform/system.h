// What the program needs from the operating system and gets differently on macOS and on Linux.
// One file per system implements it: system_linux.cpp and system_macos.cpp.
#pragma once

#include <netinet/in.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace corvane::platform {

/// Accepts one connection without waiting. The new socket is non-blocking, close-on-exec and raises
/// no SIGPIPE. Returns the descriptor and fills `peer`, or -1 with errno as by accept(2). The
/// family of a peer that the system has forgotten, after a reset, is AF_UNSPEC.
int acceptConnection(int listener, sockaddr_in& peer);

/// Makes the connections of a listener spend as little as possible on the control of congestion,
/// where the system lets them choose: between two processes of one machine there is none.
void simplifyCongestionControl(int listener);

/// Flags for every send: no SIGPIPE where the system has a flag for it.
int sendFlags();

/// Closes every open descriptor from `first` on. Safe between fork and exec.
void closeDescriptorsFrom(int first);

/// Lets the kernel copy up to `count` bytes between two files at their current offsets. Returns the
/// number copied, 0 at the end of the source (or where the kernel cannot tell), or -1 with errno;
/// ENOSYS where the system has no such call. It truncates nothing and carries no attributes.
ssize_t copyInKernel(int from, int to, std::size_t count);

/// Brings what has been written to a file, or the names in a directory, to the disk, so that they
/// outlast a power cut. It waits for the disk. Returns 0 or -1 with errno; 0 where the file system
/// has nothing like it.
int syncToDisk(int fd);

/// Milliseconds of a clock that only goes forward. It may advance in steps of some milliseconds,
/// but costs next to nothing to read.
std::int64_t coarseMilliseconds();

/// From now on memory that is freed stays with the process, where the system has a choice: fresh
/// pages cost more than most uses of them.
void keepFreedMemory();
/// Gives the freed memory back to the system.
void returnFreedMemory();

/// Whether a process that does nothing about a signal ends by it.
bool endsProcessByDefault(int sig);

/// The open(2) flag for a directory whose entries are only reached by name.
int searchFlag();

/// The working directory; empty when it is gone, or longer than fits into `room` bytes with a zero
/// byte at the end. It needs no free descriptor once it has succeeded.
std::string currentDirectory(std::size_t room);

/// The directory of the names that the system's tempnam(3) makes when it is asked for names in
/// "/tmp", with the separator at its end; empty when it would make none.
std::string temporaryDirectory();

/// The names that the system's tmpnam(3) gives to temporary files, as a template of mkstemps(3).
extern const char* const temporaryNamePattern;

}  // namespace corvane::platform
