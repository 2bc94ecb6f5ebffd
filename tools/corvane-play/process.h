// A program that runs beside this one: Corvane, or a browser.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_desc.h"

namespace corvane::play {

/// Whether it is a file, and can be executed.
bool isExecutable(const std::string& path);

/// The program's path: `name` itself when it has a "/" and can be executed, else the first of that
/// name in the directories of PATH; empty when there is none.
std::string findProgram(const std::string& name);

class Process {
  public:
    enum class Output { Discarded, Piped };

    /// Starts it in a process group of its own, so that all that it starts ends with it. Throws
    /// IOException.
    Process(const std::vector<std::string>& arguments, Output output);
    /// Ends it as stop() does.
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    Process(Process&&) = delete;
    Process& operator=(Process&&) = delete;

    /// Whether it has ended; then its status as waitpid(2) tells it.
    std::optional<int> status();

    /// The reading end of its standard error and output; only for Piped.
    FileDesc& output() { return output_; }

    /// Asks its group to end by SIGTERM, and kills it when it has not ended after `patience`.
    void stop(std::chrono::milliseconds patience = std::chrono::seconds(5));

  private:
    [[noreturn]] void become(const std::vector<std::string>& arguments, int outputEnd) const;

    pid_t pid_ = -1;
    std::optional<int> status_;
    FileDesc output_;
};

}  // namespace corvane::play
