// The real server as a process of its own, in a scratch directory that looks like an installation:
// the executable, its configuration and its log, a home directory and one for temporary files.
// Failures that no test expects are thrown as std::runtime_error.
#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/client_socket.h"
#include "support/process_status.h"
#include "support/scratch_directory.h"

namespace corvane::test {

class ServerProcess {
  public:
    struct Options {
        /// Lines of the configuration file, behind "PORT=0" and a log pattern without the time.
        std::string configuration = {};
        /// Names and contents of further files, put beside the executable before the start.
        std::vector<std::pair<std::string, std::string>> files = {};
        /// Takes the place of the configuration file; nothing is put in front of its lines.
        bool ownConfiguration = false;
        /// Where standard output goes; -1 for a file.
        int standardOutput = -1;
        /// Runs in the server's process before it becomes the server: signal-safe calls only.
        std::function<void()> prepare = [] {};
    };

    /// Starts the server. It serves when this returns, unless it has ended before.
    explicit ServerProcess(const Options& options);
    /// Kills what still runs.
    ~ServerProcess();
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;
    ServerProcess(ServerProcess&&) = delete;
    ServerProcess& operator=(ServerProcess&&) = delete;

    const ScratchDirectory& directory() const { return directory_; }
    std::string home() const { return directory_ / "home"; }
    pid_t pid() const { return pid_; }
    /// The port it listens on; 0 when it does not.
    int port() const { return port_; }

    /// Lines of the log without the time, as "LEVEL category message".
    std::vector<std::string> logLines() const;
    bool hasLogged(std::string_view line) const;
    /// Waits for a line with this text in it; returns whether it came.
    bool waitForLog(std::string_view text) const;
    std::string log() const;
    std::string output() const { return readFile(directory_ / "stdout"); }
    std::string errors() const { return readFile(directory_ / "stderr"); }

    ClientSocket connect(int receiveBuffer = 0) const {
        return ClientSocket(port(), receiveBuffer);
    }
    /// Sends a request over a connection of its own and returns the reply.
    std::string request(std::string_view text) const { return connect().request(text); }

    void signal(int number) const;
    /// Stops it with SIGSTOP and waits until it stands still.
    void suspend() const;
    /// Waits for its end and returns the exit status, or 128 plus the number of the signal.
    int wait();
    bool isRunning();
    /// The process that goes on after detaching; the status of the first one is returned.
    int followDetached();

    /// Open descriptors now, and when the server began to serve.
    int descriptors() const { return descriptorsOf(pid_); }
    int descriptorsAtStart() const { return descriptorsAtStart_; }
    /// Takes note of them once more, for a server that has closed some since it listens.
    void recountDescriptors() { descriptorsAtStart_ = descriptors(); }
    /// Whether a child of it has ended that it has not collected.
    bool hasZombies() const { return hasZombieChild(pid_); }
    /// User and system time in clock ticks.
    long processorTime() const { return processorTimeOf(pid_); }
    /// Resident memory in KiB.
    long residentMemory() const { return residentMemoryOf(pid_); }
    /// What a sanitizer has reported; empty for nothing.
    std::string sanitizerReport() const;

  private:
    void becomeServer(const Options& options) const;
    void waitUntilServing();
    /// Looks for the port in the log, and on the console; returns whether it is there.
    bool findPort();
    bool findDetached();

    ScratchDirectory directory_;
    pid_t pid_ = -1;
    int port_ = 0;
    bool ended_ = false;
    int status_ = 0;
    int descriptorsAtStart_ = 0;
};

}  // namespace corvane::test
