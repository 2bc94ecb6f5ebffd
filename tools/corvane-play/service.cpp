#include "corvane-play/service.h"

namespace corvane::play {

void Presence::enter() {
    ++pages_;
    timer_.cancel();
    if (!std::exchange(wasThere_, true) && onFirst) {
        onFirst();
    }
}

void Presence::leave() {
    if (--pages_ > 0) {
        return;
    }
    timer_.expires_after(limits_.pageGone);
    timer_.async_wait([this](error_code error) {
        // A reloaded page may have come back after the timer had run out.
        if (!error && pages_ == 0 && onGone) {
            onGone();
        }
    });
}

}  // namespace corvane::play
