// Child processes for tests with an X server: an environment to start them in, programs that run
// to their end, and programs that run until the test is done with them. Nothing here knows of X11
// or GoogleTest; failures of the surroundings are thrown as std::runtime_error.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace corvane::x11test {

/// How long anything may take before a test gives up on it; generous, for loaded machines.
constexpr std::chrono::seconds patience(20);

/// The variables that a child process gets.
class Environment {
  public:
    /// A copy of what this process has.
    Environment();

    void set(const std::string& name, const std::string& value) { variables_[name] = value; }
    void unset(const std::string& name) { variables_.erase(name); }

    /// One "NAME=value" for each variable.
    std::vector<std::string> strings() const;

  private:
    std::map<std::string, std::string> variables_;
};

/// An owned descriptor, -1 for none.
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number() const { return number_; }
    int release();
    void close();

  private:
    int number_;
};

struct Pipe {
    Pipe();
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// A program that is ended, politely first, when the object goes. The system ends it too when this
/// process dies early.
class ChildProcess {
  public:
    /// Starts `command`, found along PATH unless it has a slash. Its standard output and error
    /// are the descriptors given, its standard input is the null device.
    ChildProcess(const std::vector<std::string>& command, const Environment& environment,
                 int output, int errors);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Whether it has ended; collects its status.
    bool hasEnded();

    /// Ends the program at once, without a chance to clean up.
    void kill();

    /// Waits for the end and returns the exit status, or 128 plus the signal's number. Throws when
    /// the program does not end in time.
    int wait();

  private:
    pid_t pid_ = -1;
    int status_ = 0;
};

/// What a program that ran to its end left behind.
struct Outcome {
    int status = 0;  ///< as ChildProcess::wait returns it
    std::string output;
    std::string errors;
};

/// Runs `command` to its end. Throws when it does not end in time.
Outcome runProgram(const std::vector<std::string>& command, const Environment& environment);

/// Looks at `condition` again and again until it holds; false when it does not in time. Between
/// two looks waits for input on `descriptor` (-1: none), but never more than a few milliseconds.
bool waitUntil(const std::function<bool()>& condition, int descriptor = -1);

}  // namespace corvane::x11test
