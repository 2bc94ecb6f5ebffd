// Launching into a scratch directory: programs that report what they were started with.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "fileutil/properties.h"
#include "support/child_reports.h"
#include "support/command_fixture.h"
#include "support/environment.h"
#include "support/working_directory.h"

namespace corvane::test {

class Launcher : public CommandTest {
  protected:
    ~Launcher() override {
        while (::waitpid(-1, nullptr, 0) > 0) {
        }
        props.clear();
    }
    void installOpener() { installProgram("bin/xdg-open"); }
    std::string installProgram(const std::string& name) {
        std::string program = scratch.file(name);
        EXPECT_EQ(::unlink(program.c_str()), 0);
        EXPECT_EQ(::symlink(CHILD_REPORT, program.c_str()), 0);
        return program;
    }
    // The lines of an execute command that begins with `target`, in the scratch directory.
    std::string executeLine(const std::string& target) const {
        return commandLine("DEBUG", "execute",
                           ": execute app '" + target + "' currdir '" +
                               std::filesystem::current_path().string() + "/'");
    }

    EnvironmentVariable path{"PATH", scratch / "bin"};
    ChildReports reports{scratch};
    WorkingDirectory inside{scratch.path()};
};

}  // namespace corvane::test
