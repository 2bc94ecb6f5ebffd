// Running another program and waiting for its end, its outputs and its status, without ever being
// held by it: every wait has a deadline, lets signals in and ends when the program has to stop.
#pragma once

#include <signal.h>
#include <sys/types.h>

#include <functional>
#include <optional>
#include <string>

#include "platform/output_pipe.h"
#include "platform/waiting.h"

namespace corvane {

/// While one exists, the program's own handler of SIGCHLD collects no status of a child, and the
/// signal ends a wait. In the end the handler is put back and told to look for children.
class ChildSignalHold {
  public:
    ChildSignalHold();
    ~ChildSignalHold();
    ChildSignalHold(const ChildSignalHold&) = delete;
    ChildSignalHold& operator=(const ChildSignalHold&) = delete;
    ChildSignalHold(ChildSignalHold&&) = delete;
    ChildSignalHold& operator=(ChildSignalHold&&) = delete;

  private:
    struct sigaction previousAction_ {};
    sigset_t previousMask_{};
};

class Child {
  public:
    /// The outputs that go through pipes; the other standard streams are those of this process.
    enum class Capture { Nothing, Output, OutputAndErrors };
    /// In a group of its own it can be killed together with all that it has started.
    enum class Group { Shared, Own };

    /// Starts a child that runs `become`, which has to replace it by a program
    /// (platform/process.h); when it returns, the child ends with status 255. Throws IOException
    /// "pipe() fail" or "fork() fail".
    Child(Capture capture, Group group, const std::function<void()>& become);
    /// Kills it and collects its status, unless it has ended or leave() was called.
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    Child(Child&&) = delete;
    Child& operator=(Child&&) = delete;

    /// Takes its outputs until it ends; for no longer than until the deadline or a request to stop
    /// the program. Returns whether it has ended. Throws what OutputPipe::drain() throws.
    bool waitFor(const Deadline& deadline);
    /// Kills it, with all that it has started when it has a group of its own.
    void kill();
    /// Leaves it to itself; its status is then collected by the handler of SIGCHLD.
    void leave() { isLeft_ = true; }

    pid_t pid() const { return pid_; }
    /// The status as waitpid(2) tells it; none while it runs, -100 when waiting for it failed.
    std::optional<int> status() const { return status_; }
    /// The exit status, or 128 + the number of the signal that killed it; 0 while it runs and when
    /// waiting for it failed.
    int exitCode() const;
    /// The error number of a wait that failed; 0 for none.
    int waitError() const { return waitError_; }

    /// All that it wrote, also after its end by others that it has started: these are killed when
    /// they are not at their end at the deadline or when the program has to stop. Throws what
    /// OutputPipe::drain() throws, and kills them before.
    const std::string& wholeOutput(const Deadline& deadline) { return whole(output_, deadline); }
    const std::string& wholeErrors(const Deadline& deadline) { return whole(errors_, deadline); }

  private:
    void collect(int options);
    int waitForOutput(const Deadline& deadline);
    void signalGroup() const;
    const std::string& whole(std::optional<OutputPipe>& pipe, const Deadline& deadline) const;

    Group group_;
    std::optional<OutputPipe> output_;
    std::optional<OutputPipe> errors_;
    ChildSignalHold hold_;
    pid_t pid_ = -1;
    std::optional<int> status_;
    int waitError_ = 0;
    bool isLeft_ = false;
};

}  // namespace corvane
