// Base of the end-to-end tests: starts the server and, after each test, looks at what the test left
// behind in it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "support/reply.h"
#include "support/server_process.h"
#include "support/wait_until.h"

namespace corvane::test {

class ServerTest : public testing::Test {
  protected:
    ServerProcess& startWith(const ServerProcess::Options& options) {
        process_ = std::make_unique<ServerProcess>(options);
        return *process_;
    }
    /// Starts a server with these lines in its configuration.
    ServerProcess& start(const std::string& configuration = "") {
        return startWith({.configuration = configuration});
    }
    ServerProcess& server() const { return *process_; }

    /// A server that still runs must answer, have lost no descriptor and have no zombie child.
    void TearDown() override {
        if (process_ == nullptr) {
            return;
        }
        if (process_->port() != 0) {
            EXPECT_TRUE(waitUntil([this] {
                return !process_->isRunning() ||
                       process_->descriptors() == process_->descriptorsAtStart();
            })) << process_->descriptors()
                << " descriptors, at the start " << process_->descriptorsAtStart();
            EXPECT_TRUE(
                waitUntil([this] { return !process_->isRunning() || !process_->hasZombies(); }));
        }
        EXPECT_EQ(process_->sanitizerReport(), "");
        if (HasFailure()) {
            constexpr std::size_t shown = 8000;
            const std::string log = process_->log();
            std::cerr << "--- end of the server's log:\n"
                      << log.substr(log.size() - std::min(log.size(), shown)) << "---\n"
                      << process_->output() << process_->errors().substr(0, shown) << "---\n";
        }
    }

  private:
    std::unique_ptr<ServerProcess> process_;
};

/// The reply of "currentDir" when the server works in `directory`.
inline std::string currentDirReply(const std::string& directory) {
    return success("currentDir", valueDetail(directory), "currentDir");
}

/// The last lines of `lines`.
inline std::vector<std::string> lastOf(const std::vector<std::string>& lines, std::size_t count) {
    return {lines.end() - static_cast<std::ptrdiff_t>(std::min(count, lines.size())), lines.end()};
}

}  // namespace corvane::test
