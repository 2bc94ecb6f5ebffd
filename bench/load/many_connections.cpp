#include <sys/epoll.h>

#include <array>

#include "bench/common/clock.h"
#include "bench/common/net.h"
#include "bench/load/workload.h"

namespace corvane::bench {

namespace {

constexpr int MAX_EVENTS = 64;

struct Client {
    Descriptor connection;
    std::int64_t sent = 0;     // when its request under way was sent
    std::size_t received = 0;  // bytes of the reply so far
};

/// Opens the connections. Each makes one request at once, so that the server has accepted it
/// before the next one: otherwise the listener's queue would overflow and connects would be
/// delayed.
std::vector<Client> openClients(const Workload& load, int count, ReplyReader& reader) {
    std::vector<Client> clients;
    clients.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        Client client{connectTo(load.port)};
        setNoDelay(client.connection.get());
        sendAll(client.connection.get(), load.request);
        reader.receive(client.connection.get());
        clients.push_back(std::move(client));
    }
    return clients;
}

Descriptor watch(std::vector<Client>& clients) {
    Descriptor poll(::epoll_create1(EPOLL_CLOEXEC));
    for (Client& client : clients) {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.ptr = &client;
        if (::epoll_ctl(poll.get(), EPOLL_CTL_ADD, client.connection.get(), &event) != 0) {
            throwErrno("epoll_ctl");
        }
    }
    return poll;
}

/// Counts the replies and keeps every client busy until enough requests were sent.
class Run {
  public:
    Run(const Workload& load, ReplyReader& reader) : load_(load), reader_(reader) {}

    Measurement drive(std::vector<Client>& clients) {
        const Descriptor poll = watch(clients);
        begin_ = nowNanos();
        for (Client& client : clients) {
            send(client);
        }
        while (done_ < load_.warmup + load_.requests) {
            std::array<epoll_event, MAX_EVENTS> events{};
            const int ready = ::epoll_wait(poll.get(), events.data(), MAX_EVENTS, -1);
            for (int i = 0; i < ready; ++i) {
                receive(*static_cast<Client*>(events[static_cast<std::size_t>(i)].data.ptr));
            }
        }
        result_.seconds = static_cast<double>(nowNanos() - begin_) / 1e9;
        return std::move(result_);
    }

  private:
    void send(Client& client) {
        if (sent_ == load_.warmup + load_.requests) {
            return;
        }
        ++sent_;
        client.received = 0;
        client.sent = nowNanos();
        sendAll(client.connection.get(), load_.request);
    }

    void receive(Client& client) {
        if (!reader_.receiveSome(client.connection.get(), client.received)) {
            return;
        }
        result_.replyBytes = client.received;
        const std::int64_t now = nowNanos();
        if (++done_ > load_.warmup) {
            result_.samples.push_back(now - client.sent);
        } else if (done_ == load_.warmup) {
            begin_ = now;
        }
        send(client);
    }

    const Workload& load_;
    ReplyReader& reader_;
    Measurement result_;
    std::int64_t begin_ = 0;
    int sent_ = 0;
    int done_ = 0;
};

}  // namespace

Measurement runManyConnections(const Workload& load) {
    ReplyReader reader(load.terminator, load.expected);
    const std::vector<Client> silent = openClients(load, load.silent, reader);
    std::vector<Client> clients = openClients(load, load.connections, reader);
    return Run(load, reader).drive(clients);
}

}  // namespace corvane::bench
