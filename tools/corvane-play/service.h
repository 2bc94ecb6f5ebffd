// What all connections share: the site, how many there are, and whether a page is there.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstddef>
#include <functional>
#include <utility>

#include "corvane-play/net.h"
#include "corvane-play/site.h"

namespace corvane::play {

/// Counts its owner among others as long as it exists.
class Place {
  public:
    explicit Place(std::size_t& count) : count_(&count) { ++count; }
    ~Place() {
        if (count_ != nullptr) {
            --*count_;
        }
    }
    Place(Place&& other) noexcept : count_(std::exchange(other.count_, nullptr)) {}
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;
    Place& operator=(Place&&) = delete;

  private:
    std::size_t* count_;
};

/// Tells when a page has come, and when the last one has been gone for a while.
class Presence {
  public:
    Presence(asio::io_context& context, const Limits& limits) : timer_(context), limits_(limits) {}

    void enter();
    void leave();
    /// Whether any page has come so far.
    bool wasThere() const { return wasThere_; }

    std::function<void()> onFirst;  ///< the first page has come
    std::function<void()> onGone;   ///< there was one, and none has been there for a while

  private:
    asio::steady_timer timer_;
    const Limits& limits_;
    std::size_t pages_ = 0;
    bool wasThere_ = false;
};

struct Service {
    Service(asio::io_context& usedContext, Site servedSite)
        : context(usedContext), site(std::move(servedSite)), presence(usedContext, site.limits) {}

    asio::io_context& context;
    Site site;
    Presence presence;
    std::size_t connections = 0;
    std::size_t bridges = 0;
};

}  // namespace corvane::play
