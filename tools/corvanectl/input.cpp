#include "corvanectl/input.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/io.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {

std::string readInput(int fd, const std::string& name) {
    std::string data;
    std::array<char, std::size_t{64} * 1024> chunk;
    while (true) {
        const ssize_t got = readSome(fd, chunk);
        if (got == 0) {
            return data;
        }
        if (got > 0) {
            data.append(chunk.data(), static_cast<std::size_t>(got));
        } else if (errno == EAGAIN) {  // whoever gave the descriptor does not want to wait
            waitForSocket(fd, Direction::Read, {});
        } else {
            throw Exception(concatenate("cannot read ", name, ": ", std::strerror(errno)));
        }
    }
}

}  // namespace corvane::ctl
