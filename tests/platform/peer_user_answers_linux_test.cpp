// What is made of answers that this kernel may never give. The other end of a pair of sockets
// stands in for the kernel: it reads the question and has the answer to the next one ready.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/file_desc.h"
#include "platform/peer_user_fixture.h"

namespace corvane {
namespace {

constexpr uid_t other = 4321;
constexpr std::uint32_t someInode = 77;

struct Question {
    nlmsghdr header;
    inet_diag_req_v2 socket;
};

struct Answer {
    nlmsghdr header;
    inet_diag_msg socket;
};

struct ErrorAnswer {
    nlmsghdr header;
    nlmsgerr error;
};

class PeerUserAnswer : public PeerUser {
  protected:
    PeerUserAnswer() {
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends.data()), 0);
        channel = FileDesc(ends[0]);
        kernel = FileDesc(ends[1]);
        connect();
    }
    /// What the kernel gives for a client that is there, to the question after this one.
    Answer rightAnswer() const {
        EXPECT_EQ(found(), std::nullopt);
        EXPECT_EQ(errno, EAGAIN);
        Question question{};
        while (::recv(kernel, &question, sizeof question, 0) != -1) {
            // the last one counts
        }
        Answer answer{};
        answer.header.nlmsg_len = sizeof answer;
        answer.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
        answer.header.nlmsg_seq = question.header.nlmsg_seq + 1;
        answer.socket.idiag_family = AF_INET;
        answer.socket.idiag_state = TCP_ESTABLISHED;
        answer.socket.id = question.socket.id;
        answer.socket.idiag_uid = other;
        answer.socket.idiag_inode = someInode;
        return answer;
    }
    template <typename Any>
    std::optional<uid_t> foundWith(const Any& answer, std::size_t size = sizeof(Any)) const {
        EXPECT_EQ(::send(kernel, &answer, size, 0), static_cast<ssize_t>(size));
        return found();
    }
    /// Nobody is found with the answer, for this reason.
    template <typename Any>
    void expectNobody(const Any& answer, int error, std::size_t size = sizeof(Any)) const {
        EXPECT_EQ(foundWith(answer, size), std::nullopt);
        EXPECT_EQ(errno, error);
    }

    FileDesc kernel;
};

TEST_F(PeerUserAnswer, NamesTheUserOfAnOpenConnection) {
    for (const int state : {TCP_ESTABLISHED, TCP_FIN_WAIT1, TCP_FIN_WAIT2}) {
        Answer answer = rightAnswer();
        answer.socket.idiag_state = static_cast<std::uint8_t>(state);
        EXPECT_EQ(foundWith(answer), other);
    }
}

TEST_F(PeerUserAnswer, NamesNobodyForASocketThatItsProgramHasClosed) {
    Answer closed = rightAnswer();
    closed.socket.idiag_uid = 0;
    closed.socket.idiag_inode = 0;
    expectNobody(closed, ENOENT);
}

TEST_F(PeerUserAnswer, NamesTheUserOfAClosedSocketWhereTheKernelStillKnowsIt) {
    Answer closed = rightAnswer();
    closed.socket.idiag_inode = 0;
    EXPECT_EQ(foundWith(closed), other);
}

TEST_F(PeerUserAnswer, NamesRootForASocketThatIsOpen) {
    Answer open = rightAnswer();
    open.socket.idiag_uid = 0;
    EXPECT_EQ(foundWith(open), 0U);
}

TEST_F(PeerUserAnswer, NamesNobodyInAMessageOfAnotherKind) {
    Answer done = rightAnswer();
    done.header.nlmsg_type = NLMSG_DONE;
    expectNobody(done, EPROTO);
}

TEST_F(PeerUserAnswer, NamesNobodyInAnError) {
    ErrorAnswer error{};
    for (const auto& [given, told] : {std::pair{-EACCES, EACCES}, std::pair{0, EPROTO}}) {
        error.header = rightAnswer().header;
        error.header.nlmsg_type = NLMSG_ERROR;
        error.error.error = given;
        expectNobody(error, told);
    }
}

TEST_F(PeerUserAnswer, NamesNobodyWhenItIsCutOff) {
    for (const std::size_t size : {sizeof(nlmsghdr), sizeof(nlmsghdr) + sizeof(inet_diag_sockid),
                                   offsetof(Answer, socket.idiag_uid) + 2, sizeof(Answer) - 1}) {
        expectNobody(rightAnswer(), EPROTO, size);
    }
}

TEST_F(PeerUserAnswer, NamesNobodyWhenNoneComesAnyMore) {
    EXPECT_EQ(::shutdown(kernel, SHUT_WR), 0);
    EXPECT_EQ(found(), std::nullopt);
    EXPECT_EQ(errno, EPROTO);
}

TEST_F(PeerUserAnswer, NamesNobodyForOtherAddressesOrPorts) {
    const auto expectNobodyAt = [this](const auto& change) {
        Answer answer = rightAnswer();
        change(answer.socket.id);
        expectNobody(answer, ENOENT);
    };
    expectNobodyAt([](inet_diag_sockid& id) { id.idiag_sport ^= 1U; });
    expectNobodyAt([](inet_diag_sockid& id) { id.idiag_dport = 0; });  // as a listener has it
    expectNobodyAt([](inet_diag_sockid& id) { id.idiag_src[0] ^= htonl(1); });
    expectNobodyAt([](inet_diag_sockid& id) { id.idiag_dst[0] ^= htonl(1); });
}

TEST_F(PeerUserAnswer, NamesNobodyForASocketThatIsNoOpenConnection) {
    for (const int state : {TCP_SYN_SENT, TCP_CLOSE_WAIT, TCP_TIME_WAIT, TCP_LISTEN}) {
        Answer answer = rightAnswer();
        answer.socket.idiag_state = static_cast<std::uint8_t>(state);
        expectNobody(answer, ENOENT);
    }
}

}  // namespace
}  // namespace corvane
