// Whole requests through the real reader, dispatcher and commands, over a pair of sockets and in a
// directory of their own. Each request gets exactly one complete reply, or costs its connection.
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "fileutil/paths.h"
#include "fuzz/confined_server.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/quiet_log.h"
#include "fuzz/scratch.h"

namespace {

using namespace corvane;
namespace fs = std::filesystem;

// Small enough for the reply to any request to fit into a socket, since nobody reads meanwhile.
constexpr std::size_t longestInput = 12288;

std::string programPath;
std::array<char*, 1> programArguments{};

// The server's surroundings: home, temporary files, PATH and the program's own directory, with no
// window tool in it, all in the scratch directory and beside the one that commands work in.
void prepareProcess() {
    const std::string& scratch = fuzz::scratchDirectory();
    for (const char* name : {"/home", "/tmp", "/empty", "/program", "/work"}) {
        fs::create_directory(scratch + name);
    }
    std::ofstream(scratch + "/program/registry.txt") << "HKEY_USERS/a:b=value\n";
    ::setenv("HOME", (scratch + "/home").c_str(), 1);
    ::setenv("TMPDIR", (scratch + "/tmp").c_str(), 1);
    ::setenv("PATH", (scratch + "/empty").c_str(), 1);
    programPath = scratch + "/program/corvane";
    programArguments = {programPath.data()};
    ARGC = 1;
    ARGV = programArguments.data();
}

// A small tree to work on, the same before every input.
void prepareFiles() {
    const std::string work = fuzz::scratchDirectory() + "/work";
    fs::current_path(fuzz::scratchDirectory());
    fs::remove_all(work);
    fs::create_directories(work + "/d/e");
    fs::current_path(work);
    std::ofstream("a.txt") << "some <text> & more\n";
    std::ofstream("d/b.txt") << "b";
    std::ofstream("d/e/c.bin") << std::string(3, '\0');
}

std::string takeReplies(int sock) {
    std::string replies;
    std::array<char, 16384> chunk{};
    ssize_t count = 0;
    while ((count = ::recv(sock, chunk.data(), chunk.size(), MSG_DONTWAIT)) > 0) {
        replies.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return replies;
}

void checkReply(const std::string& reply) {
    constexpr std::string_view begin = "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"";
    constexpr std::string_view end("</Header></CorvaneMsg>\0", 23);
    fuzz::require(reply.starts_with(begin) && reply.ends_with(end), "a reply is a whole document");
    fuzz::require(reply.find('\0') == reply.size() - 1, "a request gets one reply");
    fuzz::require(reply.find(" Result=\"SUCCESS\"") != std::string::npos ||
                      reply.find(" Result=\"FAILED\"") != std::string::npos,
                  "a reply tells success or failure");
}

void collectChildren() {
    while (::waitpid(-1, nullptr, WNOHANG) > 0) {
    }
}

void serve(std::string_view bytes) {
    std::array<int, 2> ends{};
    fuzz::require(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()) == 0, "sockets can be made");
    fuzz::require(
        ::write(ends[0], bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()),
        "the socket takes the requests");
    ::shutdown(ends[0], SHUT_WR);

    fuzz::ConfinedServer server;
    server.addClient(FileDesc(ends[1]), {});
    while (!server.clients.empty() && server.processClient(ends[1])) {
        if (const std::string reply = takeReplies(ends[0]); !reply.empty()) {
            checkReply(reply);
        }
    }
    server.deinitServer();
    ::close(ends[0]);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const fuzz::QuietLog log;
    static const bool prepared = (prepareProcess(), true);
    static_cast<void>(prepared);
    prepareFiles();
    serve(fuzz::asText(data, std::min(size, longestInput)));
    collectChildren();
    return 0;
}
