// What clients have sent behind the request that was just read: it was received together with that
// request and waits here for its turn.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace corvane {

class Surplus {
  public:
    /// What is left of a client's bytes; empty for most clients. Valid until they change.
    std::string_view of(int sock) const {
        const auto found = left_.find(sock);
        return found == left_.end()
                   ? std::string_view()
                   : std::string_view(found->second.bytes).substr(found->second.taken);
    }

    /// Adds bytes of a client that has none here.
    void keep(int sock, std::string_view bytes) { left_[sock] = {std::string(bytes), 0}; }

    /// Takes `count` bytes, of those that of() shows, away.
    void take(int sock, std::size_t count) {
        if (const auto found = left_.find(sock); found != left_.end()) {
            found->second.taken += count;
            if (found->second.taken == found->second.bytes.size()) {
                left_.erase(found);
            }
        }
    }

    void forget(int sock) { left_.erase(sock); }

  private:
    struct Bytes {
        std::string bytes;
        std::size_t taken;
    };
    std::map<int, Bytes> left_;
};

}  // namespace corvane
