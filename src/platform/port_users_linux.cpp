// Through /proc: the tables of TCP sockets, and the descriptors of every process.
#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cstdio>
#include <fstream>
#include <functional>
#include <map>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "platform/port_users.h"
#include "text/strings.h"

namespace corvane::platform {
namespace {

constexpr std::size_t addressDigits = 8;  // of IPv4
constexpr std::size_t address6Digits = 32;

template <typename Number>
std::optional<Number> numberIn(std::string_view text, int base = 10) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(number)
                                                                    : std::nullopt;
}

std::string linkOf(const std::string& path) {
    std::array<char, PATH_MAX> target{};
    const ssize_t size = ::readlink(path.c_str(), target.data(), target.size());
    return size == -1 ? "" : std::string(target.data(), static_cast<std::size_t>(size));
}

// Calls `take` with every name of a directory; false when it cannot be listed.
bool forEachName(const std::string& directory, const std::function<void(const char*)>& take) {
    const std::unique_ptr<DIR, int (*)(DIR*)> names(::opendir(directory.c_str()), ::closedir);
    while (const dirent* const entry = names ? ::readdir(names.get()) : nullptr) {
        take(entry->d_name);
    }
    return names != nullptr;
}

struct Place {
    std::string address;
    int port;
};

// "0100007F:D431", or with 32 digits the address of IPv6; nothing for one that never is IPv4.
std::optional<Place> placeIn(std::string_view text) {
    const std::size_t colon = text.find(':');
    const auto port = numberIn<int>(text.substr(std::min(colon, text.size() - 1) + 1), 16);
    if (colon == std::string_view::npos || !port) {
        return std::nullopt;
    }
    const std::string_view digits = text.substr(0, colon);
    const auto end = digits.size() >= addressDigits
                         ? numberIn<std::uint32_t>(digits.substr(digits.size() - addressDigits), 16)
                         : std::nullopt;
    if (!end) {
        return std::nullopt;
    }
    const bool isAny6 = digits == std::string(address6Digits, '0');
    if (digits.size() == address6Digits && !isAny6 &&
        digits.substr(0, 24) != "0000000000000000FFFF0000") {
        return std::nullopt;
    }
    std::array<char, INET_ADDRSTRLEN> name{};
    const in_addr address{*end};
    ::inet_ntop(AF_INET, &address, name.data(), name.size());
    return Place{isAny6 ? "[::]" : name.data(), *port};
}

struct TableEntry {
    PortUser socket;
    unsigned long inode = 0;
};

PortUser::State stateOf(int tcpState, unsigned long inode) {
    if (tcpState == TCP_LISTEN) {
        return PortUser::State::Listening;
    }
    return inode == 0 ? PortUser::State::Closed : PortUser::State::Connected;
}

// "0: LOCAL REMOTE STATE tx:rx tr:when retransmissions UID timeout INODE ..."
std::optional<TableEntry> entryIn(const std::string& line, int port) {
    std::istringstream in(line);
    std::string skipped;
    std::string local;
    std::string remote;
    std::string state;
    uid_t user = 0;
    TableEntry entry;
    in >> skipped >> local >> remote >> state >> skipped >> skipped >> skipped >> user >> skipped >>
        entry.inode;
    const auto here = placeIn(local);
    const auto there = placeIn(remote);
    if (!in || !here || !there || here->port != port) {
        return std::nullopt;
    }
    PortUser& socket = entry.socket;
    socket.state = stateOf(numberIn<int>(state, 16).value_or(0), entry.inode);
    socket.local = format("%s:%d", here->address.c_str(), here->port);
    socket.remote = format("%s:%d", there->address.c_str(), there->port);
    socket.remotePort = there->port;
    socket.user = entry.inode == 0 && user == 0 ? std::nullopt : std::optional(user);
    return entry;
}

// The system lists a socket twice when others come and go while its table is read. A closed one has
// no inode any more.
void addOnce(std::vector<TableEntry>& entries, TableEntry entry) {
    const auto isEntry = [&entry](const TableEntry& known) { return known.inode == entry.inode; };
    if (entry.inode == 0 || std::none_of(entries.begin(), entries.end(), isEntry)) {
        entries.push_back(std::move(entry));
    }
}

// The processes that hold the sockets of these inodes.
std::map<unsigned long, pid_t> holdersOf(const std::vector<TableEntry>& entries) {
    std::map<std::string, unsigned long> wanted;
    for (const TableEntry& entry : entries) {
        wanted["socket:[" + std::to_string(entry.inode) + "]"] = entry.inode;
    }
    std::map<unsigned long, pid_t> holders;
    forEachName("/proc", [&](const char* name) {
        const auto process = numberIn<pid_t>(name);
        if (!process || holders.size() == wanted.size()) {
            return;
        }
        const std::string directory = concatenate("/proc/", name, "/fd/");
        forEachName(directory, [&](const char* fd) {
            if (const auto found = wanted.find(linkOf(directory + fd)); found != wanted.end()) {
                holders.emplace(found->second, *process);
            }
        });
    });
    return holders;
}

// Seconds since 1970 when the machine started.
std::optional<std::int64_t> bootTime() {
    std::ifstream statistics("/proc/stat");
    for (std::string line; std::getline(statistics, line);) {
        if (startsWith(line, "btime ")) {
            return numberIn<std::int64_t>(std::string_view(line).substr(6));
        }
    }
    return std::nullopt;
}

// The name of a program, in parentheses, may hold blanks; the start is the 22nd field.
std::optional<std::int64_t> startOf(const std::string& directory) {
    constexpr int fieldsBetween = 19;
    std::ifstream file(directory + "/stat");
    std::string text;
    std::getline(file, text);
    std::istringstream fields(text.substr(std::min(text.rfind(')'), text.size() - 1) + 1));
    std::string skipped;
    for (int i = 0; i < fieldsBetween; ++i) {
        fields >> skipped;
    }
    std::int64_t ticks = 0;
    const std::optional<std::int64_t> boot = bootTime();
    return fields >> ticks && boot ? std::optional(*boot + ticks / ::sysconf(_SC_CLK_TCK))
                                   : std::nullopt;
}

bool isWritten(const std::string& process, const std::string& fd) {
    std::ifstream info(concatenate(process, "/fdinfo/", fd));
    for (std::string line; std::getline(info, line);) {
        if (startsWith(line, "flags:")) {
            return (numberIn<unsigned>(trim(line.substr(6)), 8).value_or(0) & O_ACCMODE) !=
                   O_RDONLY;
        }
    }
    return false;
}

std::string withoutMark(const std::string& path) {
    constexpr std::string_view mark = " (deleted)";
    return endsWith(path, mark) ? path.substr(0, path.size() - mark.size()) : path;
}

}  // namespace

std::vector<PortUser> portUsers(int port) {
    std::vector<TableEntry> entries;
    for (const char* table : {"/proc/net/tcp", "/proc/net/tcp6"}) {
        std::ifstream lines(table);
        for (std::string line; std::getline(lines, line);) {
            if (auto entry = entryIn(line, port)) {
                addOnce(entries, std::move(*entry));
            }
        }
    }
    const auto holders = entries.empty() ? std::map<unsigned long, pid_t>() : holdersOf(entries);
    std::vector<PortUser> users;
    for (TableEntry& entry : entries) {
        if (const auto holder = holders.find(entry.inode); holder != holders.end()) {
            entry.socket.process = holder->second;
        }
        users.push_back(std::move(entry.socket));
    }
    return users;
}

ProcessInfo processInfo(pid_t process) {
    const std::string directory = format("/proc/%d", process);
    struct stat info {};
    if (::stat(directory.c_str(), &info) != 0) {
        return {};
    }
    std::string startedAs;
    std::ifstream arguments(directory + "/cmdline");
    std::getline(arguments, startedAs, '\0');
    return {withoutMark(linkOf(directory + "/exe")), startedAs, info.st_uid, startOf(directory)};
}

std::optional<std::vector<std::string>> filesWrittenBy(pid_t process) {
    const std::string directory = format("/proc/%d", process);
    std::vector<std::string> files;
    const bool isOpen = forEachName(directory + "/fd", [&](const char* fd) {
        const std::string link = concatenate(directory, "/fd/", fd);
        struct stat info {};
        if (::stat(link.c_str(), &info) == 0 && S_ISREG(info.st_mode) && isWritten(directory, fd)) {
            files.push_back(withoutMark(linkOf(link)));
        }
    });
    return isOpen ? std::optional(files) : std::nullopt;
}

}  // namespace corvane::platform
