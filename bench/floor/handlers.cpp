#include "bench/floor/handlers.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

#include "bench/common/net.h"

namespace corvane::bench {

namespace {

constexpr std::string_view READ_HEADER =
    R"(<CorvaneMsg><Header id="info" Type="RESULT" Action="readText" Result="SUCCESS">)"
    R"(<Detail id="text" extra="">)";
// With the zero byte that ends a reply.
constexpr std::string_view READ_TRAILER{"</Detail></Header></CorvaneMsg>\0", 32};

/// Reads the file behind each other into `content`, each block scanned while it is in the cache.
std::size_t readAndScan(int file, Buffer& content) {
    struct stat status {};
    if (::fstat(file, &status) != 0) {
        throwErrno("fstat");
    }
    content.room(0, static_cast<std::size_t>(status.st_size) + BLOCK + 1);
    std::size_t size = 0;
    for (;;) {
        char* block = content.room(size, BLOCK + 1);
        const ssize_t result = ::read(file, block, BLOCK);
        if (result <= 0) {
            return size;
        }
        const auto received = static_cast<std::size_t>(result);
        block[received] = '\0';
        if (std::strcspn(block, "&<>\"'") != received) {
            throw std::runtime_error("the floor reads plain text only");
        }
        size += received;
    }
}

}  // namespace

std::string_view parameter(std::string_view request) {
    request.remove_prefix(request.find('\n') + 1);
    return request.substr(0, request.find('\n'));
}

std::string plainSuccess(std::string_view action) {
    std::string reply = R"(<CorvaneMsg><Header id="info" Type="RESULT" Action=")";
    reply.append(action).append(R"(" Result="SUCCESS"></Header></CorvaneMsg>)");
    reply += '\0';
    return reply;
}

Handler fixedReply(std::string reply) {
    return [reply = std::move(reply)](int socket, std::string_view) {
        ::send(socket, reply.data(), reply.size(), MSG_NOSIGNAL);
    };
}

Handler writeFile() {
    return [reply = plainSuccess("write")](int socket, std::string_view request) {
        const std::string path(parameter(request));
        const std::string_view data = request.substr(std::strlen("write\n") + path.size() + 1);
        const Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
        if (::write(file.get(), data.data(), data.size()) != static_cast<ssize_t>(data.size())) {
            throwErrno("write");
        }
        sendAll(socket, reply);
    };
}

Handler readFile() {
    return [](int socket, std::string_view request) {
        const std::string path(parameter(request));
        const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
        Buffer content;
        const std::size_t size = readAndScan(file.get(), content);
        std::array<iovec, 3> parts{asPart(READ_HEADER), asPart({content.data(), size}),
                                   asPart(READ_TRAILER)};
        sendAll(socket, parts);
    };
}

}  // namespace corvane::bench
