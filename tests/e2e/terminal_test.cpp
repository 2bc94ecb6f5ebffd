// Terminals that a client names to a server without a controlling terminal, as a service has none:
// they must not become one, since the end of it ends the processes that it controls.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <stdexcept>
#include <system_error>

#include "e2e/server_test.h"
#include "platform/file_desc.h"

namespace corvane::test {
namespace {

/// A terminal that is closed when the object goes.
class Terminal {
  public:
    Terminal() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        std::array<char, 64> name{};
        if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0 ||
            ::ptsname_r(master_, name.data(), name.size()) != 0) {
            throw std::runtime_error("no terminal");
        }
        path_ = name.data();
    }
    const std::string& path() const { return path_; }

  private:
    FileDesc master_;
    std::string path_;
};

/// Pages around movies lie in /tmp, whatever TMPDIR names, and are for a program to read that is
/// not there in these tests.
void removePageOf(const std::string& movie) {
    std::error_code gone;
    for (const auto& entry : std::filesystem::directory_iterator("/tmp", gone)) {
        if (entry.path().extension() == ".html" &&
            readFile(entry.path()).find("src=\"" + movie + "\"") != std::string::npos) {
            std::filesystem::remove(entry.path(), gone);
        }
    }
}

class TerminalTest : public ServerTest {
  protected:
    /// A session of its own; documents are opened with no program.
    static void becomeService() {
        ::setsid();
        ::setenv("PATH", "/nowhere", 1);
    }
    /// Sends a request about a terminal, of which `link` names the path, and closes the terminal.
    void askAboutTerminal(const std::string& request, const std::string& link) {
        const Terminal terminal;
        const std::string path = server().directory() / link;
        std::filesystem::remove(path);
        std::filesystem::create_symlink(terminal.path(), path);
        server().request(request);
    }
};

TEST_F(TerminalTest, DoesNotEndTheServerWithIt) {
    const std::vector<std::pair<std::string, std::string>> requests{
        {"write\ntty\ntext", "tty"},
        {"readText\ntty", "tty"},
        {"readByte\ntty\n0", "tty"},
        {"copy\ntty\ncopied", "tty"},
        {"copy\ncorvane.conf\ntty", "tty"},
        {"execute\ntty.swf", "tty.swf"},
        {"regQueryValue\nHKEY_USERS\na\nb", "registry.txt"}};
    startWith({.prepare = becomeService});
    for (const auto& [request, link] : requests) {
        askAboutTerminal(request, link);
        ASSERT_EQ(server().request("currentDir"), currentDirReply(server().directory().path()))
            << request;
    }
    removePageOf("tty.swf");
}

}  // namespace
}  // namespace corvane::test
