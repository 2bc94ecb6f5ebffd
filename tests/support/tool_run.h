// Runs of a stand-in for the window tool.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "commands/wndutil.h"
#include "support/thrown.h"
#include "support/window_tool.h"

namespace corvane::test {

class ToolRun : public WindowToolTest {
  protected:
    ~ToolRun() override { wndutil::setToolTimeout(0); }

    std::string run(std::vector<std::string> extra = {}) {
        extra.insert(extra.begin(), toolPath);
        std::vector<char*> argv(extra.size() + 1);
        std::transform(extra.begin(), extra.end(), argv.begin(),
                       [](std::string& argument) { return argument.data(); });
        return wndutil::execute(toolPath.c_str(), argv.data());
    }
    std::string runFailing() {
        return thrownBy([this] { run(); });
    }
    // Runs `work` in a child process and returns whether it returned true there.
    template <typename Work>
    static bool inChild(Work work) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::_exit(work() ? 0 : 1);
        }
        int status = -1;
        ::waitpid(pid, &status, 0);
        return status == 0;
    }
};

}  // namespace corvane::test
