// A server that is confined to "in", which it may change, and "ro", which it may only read; beside
// them lies "out". Skips where the kernel cannot do it.
#pragma once

#include <stdlib.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "e2e/server_test.h"
#include "platform/confinement.h"
#include "support/sanitized.h"
#include "support/scratch_directory.h"
#include "support/tree.h"

namespace corvane::test {

class ConfinedServerTest : public ServerTest {
  protected:
    struct Options {
        /// More entries of FOLDERS, each behind a colon.
        std::string folders = {};
        /// More lines of the configuration.
        std::string configuration = {};
        /// As of ServerProcess::Options.
        std::vector<std::pair<std::string, std::string>> files = {};
        std::function<void()> prepare = [] {};
    };

    void SetUp() override {
        if (platform::Confinement::kernelVersion() == 0) {
            GTEST_SKIP() << "the kernel has no Landlock, or it is switched off";
        }
        area.directory("in");
        area.file("ro/file", "readable");
        area.file("out/secret", "secret");
        area.file("out/sub/deep", "deep");
    }

    ServerProcess& startConfined(const Options& options) {
        startWith({.configuration = "FOLDERS=" + (area / "in") + ":ro=" + (area / "ro") +
                                    options.folders + "\n" + options.configuration,
                   .files = options.files,
                   .prepare = [&options] {
                       if (isSanitized) {  // it looks for leaks in files out of reach
                           ::setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
                       }
                       options.prepare();
                   }});
        waitUntil([this] {
            return server().log().find("confined to") != std::string::npos || !server().isRunning();
        });
        server().recountDescriptors();
        return server();
    }
    ServerProcess& startConfined() { return startConfined(Options{}); }

    bool fails(const std::string& request) const {
        return server().request(request).find("Result=\"FAILED\"") != std::string::npos;
    }
    bool succeeds(const std::string& request) const {
        return server().request(request).find("Result=\"SUCCESS\"") != std::string::npos;
    }
    std::string textOf(const std::string& name) const { return readFile(area / name); }

    ScratchDirectory area;
};

}  // namespace corvane::test
