#include "corvanectl/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

namespace corvane::ctl {

bool isTerminal(int fd) { return ::isatty(fd) == 1; }

std::size_t terminalWidth(int fd) {
    constexpr std::size_t usual = 80;
    winsize size{};
    return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : usual;
}

}  // namespace corvane::ctl
