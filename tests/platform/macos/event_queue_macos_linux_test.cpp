// What only the macOS event queue has to mind.
#include <cerrno>

#include "platform/event_queue_fixture.h"
#include "platform/macos/kqueue_stand_in.h"

namespace corvane {
namespace {

TEST_F(OpenEventQueueTest, LooksAgainSoonForASignalThatWasToldOfTooEarly) {
    standins::tellOfSignal(SIGALRM);
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(errno, EINTR);
    EXPECT_EQ(queue.wait(std::nullopt, events), 0) << "a wait that ends by itself";
    sendSignalSoon();
    EXPECT_EQ(queue.wait(std::nullopt, events), -1);
    EXPECT_EQ(standins::lastTimeout(), 2'147'483) << "the next one does not";
}

}  // namespace
}  // namespace corvane
