// Commands without a network: requests go straight to a CorvaneServer, which answers into a pair of
// sockets. Log lines show the client as "10.1.2.3:4567".
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <array>
#include <future>
#include <string>
#include <string_view>
#include <vector>

#include "commands/corvane_server.h"
#include "platform/file_desc.h"
#include "platform/waiting.h"
#include "server/address.h"
#include "support/log_capture.h"
#include "support/reply.h"
#include "support/scratch_directory.h"
#include "text/memory_stream.h"

namespace corvane::test {

/// A log line of a command's own category about the client; `detail` is what follows the command's
/// name.
inline std::string commandLine(const std::string& level, const std::string& cmd,
                               const std::string& detail) {
    return level + " corvane.server.process.client.cmd." + cmd + " Client 10.1.2.3:4567: cmd '" +
           cmd + "'" + detail;
}

class CommandTest : public ::testing::Test {
  protected:
    using Lines = std::vector<std::string>;

    CommandTest() {
        deliverSignalsOnlyInWaits();  // as the program does
        std::array<int, 2> ends{};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_STREAM, 0, ends.data()), 0);
        for (const int end : ends) {
            ::fcntl(end, F_SETFD, FD_CLOEXEC);
        }
        serverEnd_ = ends[0];
        clientEnd_ = FileDesc(ends[1]);
        sockaddr_in peer{};
        peer.sin_family = AF_INET;
        peer.sin_port = htons(4567);
        ::inet_pton(AF_INET, "10.1.2.3", &peer.sin_addr);
        server.addClient(FileDesc(ends[0]), peer);
    }

    /// Sends a command with its parameter lines and returns the reply without its zero byte. The
    /// log holds the lines of this request only.
    std::string ask(const std::string& cmd, std::string_view parameters = "") {
        log.take();
        return replyOf([&] {
            MemoryStream stream(parameters);
            server.processClientCommand(serverEnd_, cmd, stream);
        });
    }

    /// What the client reads while `work` runs, up to the zero byte. It is read on another thread,
    /// since a large reply waits for its reader.
    template <typename Work>
    std::string replyOf(Work work) {
        auto reply = std::async(std::launch::async, [this] { return readReply(); });
        try {
            work();
        } catch (...) {
            ::shutdown(serverEnd_, SHUT_WR);  // the reader waits no longer
            throw;
        }
        std::string text = reply.get();
        EXPECT_FALSE(moreIsSent()) << "a second reply";
        return text;
    }

    int serverSocket() const { return serverEnd_; }

    CorvaneServer server;
    ScratchDirectory scratch;
    LogCapture log;

  private:
    std::string readReply() const {
        std::string text;
        std::array<char, std::size_t{64} * 1024> block{};
        while (text.find('\0') == std::string::npos) {
            const ssize_t count = ::recv(clientEnd_, block.data(), block.size(), 0);
            if (count <= 0) {
                return text + "(no end)";
            }
            text.append(block.data(), static_cast<std::size_t>(count));
        }
        if (text.back() == '\0' && text.find('\0') == text.size() - 1) {
            text.pop_back();
        }
        return text;
    }

    bool moreIsSent() const {
        char byte = 0;
        return ::recv(clientEnd_, &byte, 1, MSG_DONTWAIT | MSG_PEEK) > 0;
    }

    int serverEnd_ = -1;
    FileDesc clientEnd_;
};

}  // namespace corvane::test
