// A shortage of descriptors: how long the listener is left alone, in virtual time.
#include <optional>

#include "server/server_fixture.h"
#include "server/virtual_time_linux.h"
#include "support/resource_limit.h"

namespace corvane {
namespace {

using namespace std::string_literals;
using std::chrono::milliseconds;
using Lines = std::vector<std::string>;

class DescriptorShortage : public ServerFixture {
  protected:
    DescriptorShortage() { server.options.inactivity = 0; }

    Lines acceptErrors(std::size_t count) const {
        return Lines(count, "WARN corvane.server.process.listener accept error " +
                                std::to_string(EMFILE) + " on socket " +
                                server.listeners.front().address);
    }

    test::LogCapture log{log4cpp::Priority::WARN};
};

TEST_F(DescriptorShortage, LetsTheListenerRestForATenthOfASecondEachTime) {
    test::ClientSocket waiting(port);
    waiting.send("shutdown\0"s);
    std::optional<test::DescriptorLimit> limit(std::in_place, test::nextDescriptor());
    test::VirtualTime time;
    time.afterWait = [&] {
        if (time.waits().size() == 3) {
            limit.reset();
        }
    };
    server.process();
    EXPECT_EQ(time.waits(), std::vector<milliseconds>(3, milliseconds(100)));
    EXPECT_EQ(log.lines(), acceptErrors(3));
}

TEST_F(DescriptorShortage, IsOverWhenAConnectionIsClosed) {
    test::ClientSocket leaving = connect();
    test::ClientSocket waiting(port);
    waiting.send("shutdown\0"s);
    const test::DescriptorLimit limit(test::nextDescriptor());
    server.processListener(server.listeners.front().sock);
    EXPECT_EQ(log.lines(), acceptErrors(1));
    leaving.close();
    while (!server.clients.empty()) {
        server.processClient(accepted());
    }
    const test::VirtualTime time;
    server.process();
    EXPECT_EQ(time.waits(), std::vector<milliseconds>());
}

}  // namespace
}  // namespace corvane
