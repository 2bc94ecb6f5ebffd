// The guard against a second instance of the program. It always passes in this version: whether two
// servers may share a port is decided by the listener.
#pragma once

#include <string>

namespace corvane {

/// The file that would mark a running instance.
class PidFile {
  public:
    /// Releases what was held and returns true; writes no file.
    bool create(const char* path);
    /// Removes the file, if there is one. Returns 0, or the error number of the removal.
    int release();

  private:
    std::string path_;
};

extern PidFile pidFile;

/// Whether a process with this id exists.
bool unixProcessExists(int pid);

/// Ends the process with status 1 when the program already serves `port`.
void checkInstance(const std::string& name, int port);

}  // namespace corvane
