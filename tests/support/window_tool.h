// A stand-in for the window tool: a shell script beside the program, which believes to lie in the
// scratch directory.
#pragma once

#include <sys/stat.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/command_fixture.h"
#include "support/working_directory.h"

namespace corvane::test {

class WindowToolTest : public CommandTest {
  protected:
    /// Installs a tool; `script` is what it does.
    void tool(const std::string& script) {
        scratch.program("app/cvnwinfo", "#!/bin/sh\n" + script + "\n");
    }
    /// A tool that prints a text and keeps a record of its arguments.
    void recordingTool(const std::string& output) {
        tool(
            "for a in \"$@\"; do printf '<%s>' \"$a\" >> \"$0.calls\"; done\n"
            "echo >> \"$0.calls\"\nprintf '%s' '" +
            output + "'");
    }
    /// The arguments of all calls of a recording tool, each in angle brackets, a line for a call.
    std::string calls() const { return readFile(toolPath + ".calls"); }

    /// The debug line about the start of the tool; `quoted` are its arguments.
    std::string startLine(const std::string& quoted) const {
        return "DEBUG corvane.wndutil.execute execute: " + toolPath + quoted;
    }
    std::string outputLine(const std::string& output) const {
        return "DEBUG corvane.wndutil.execute Output <" + output + "> [" + toolPath + "]";
    }
    /// A pipe that nobody writes to: the script waits for it for ever with `read line < PIPE`.
    std::string silentPipe() const {
        std::string path = scratch / "silent";
        if (::mkfifo(path.c_str(), 0600) != 0) {
            throw std::runtime_error("cannot create " + path);
        }
        return path;
    }

    std::string toolPath = scratch / "app/cvnwinfo";
    ProgramArguments arguments{{scratch / "app/corvane"}};
};

}  // namespace corvane::test
