// Changes of process-wide state that the code under test reads: the working directory and the
// program's own path.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "fileutil/paths.h"

namespace corvane::test {

/// The working directory, until the end of the test.
class WorkingDirectory {
  public:
    explicit WorkingDirectory(const std::string& path) { std::filesystem::current_path(path); }
    ~WorkingDirectory() { std::filesystem::current_path(previous_); }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;
    WorkingDirectory(WorkingDirectory&&) = delete;
    WorkingDirectory& operator=(WorkingDirectory&&) = delete;

  private:
    std::filesystem::path previous_ = std::filesystem::current_path();
};

/// The arguments that the program believes to have been started with.
class ProgramArguments {
  public:
    explicit ProgramArguments(std::vector<std::string> arguments)
        : arguments_(std::move(arguments)), previousCount_(ARGC), previousVector_(ARGV) {
        for (std::string& argument : arguments_) {
            vector_.push_back(argument.data());
        }
        vector_.push_back(nullptr);
        ARGC = static_cast<int>(arguments_.size());
        ARGV = vector_.data();
    }
    ~ProgramArguments() {
        ARGC = previousCount_;
        ARGV = previousVector_;
    }
    ProgramArguments(const ProgramArguments&) = delete;
    ProgramArguments& operator=(const ProgramArguments&) = delete;
    ProgramArguments(ProgramArguments&&) = delete;
    ProgramArguments& operator=(ProgramArguments&&) = delete;

  private:
    std::vector<std::string> arguments_;
    std::vector<char*> vector_;
    int previousCount_;
    char** previousVector_;
};

}  // namespace corvane::test
