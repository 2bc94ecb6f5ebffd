#include "soak/server_process.h"

#include <fcntl.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <thread>

namespace soak {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds patience{10'000};
constexpr milliseconds longestStop{1'000};

fs::path newDirectory() {
    std::string path = (fs::temp_directory_path() / "corvane-soak-XXXXXX").string();
    expect(::mkdtemp(path.data()) != nullptr, "a temporary directory can be made");
    return path;
}

[[noreturn]] void becomeServer(const fs::path& program, const fs::path& work, const fs::path& home,
                               unsigned descriptors) {
    if (descriptors > 0) {
        const rlimit limit{descriptors, descriptors};
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
    const int null = ::open("/dev/null", O_RDWR);
    for (const int fd : {0, 1, 2}) {
        ::dup2(null, fd);
    }
    ::setenv("HOME", home.c_str(), 1);
    static_cast<void>(::chdir(work.c_str()));
    ::execl(program.c_str(), program.c_str(), nullptr);
    ::_exit(127);
}

std::string textOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

void expect(bool kept, const std::string& promise) {
    if (!kept) {
        throw std::runtime_error(promise);
    }
}

void pause() { std::this_thread::sleep_for(std::chrono::microseconds(500)); }

ServerProcess::ServerProcess(const fs::path& executable, const Setup& setup)
    : root_(newDirectory()), home_(root_ / "home"), work_(root_ / "work") {
    fs::create_directories(root_ / "program");
    fs::create_directory(home_);
    fs::create_directory(work_);
    const fs::path program = root_ / "program" / "corvane";
    fs::create_symlink(fs::absolute(executable), program);
    std::ofstream(root_ / "program" / "corvane.conf")
        << "PORT=0\nlog4cpp.priority=" << setup.priority << '\n';
    pid_ = ::fork();
    if (pid_ == 0) {
        becomeServer(program, work_, home_, setup.descriptors);
    }
    waitUntil([this] { return findPort(); }, "the server starts");
}

ServerProcess::~ServerProcess() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    fs::remove_all(root_, ignored);
}

void ServerProcess::send(int sig) const { ::kill(pid_, sig); }

milliseconds ServerProcess::waitForEnd() {
    const auto start = steady_clock::now();
    int status = 0;
    while (::waitpid(pid_, &status, WNOHANG) == 0) {
        expect(steady_clock::now() - start < patience, "the server ends");
        pause();
    }
    pid_ = -1;
    expect(WIFEXITED(status) && WEXITSTATUS(status) == 0,
           "the server ends with status 0, not " + std::to_string(status));
    return std::chrono::duration_cast<milliseconds>(steady_clock::now() - start);
}

void ServerProcess::stop() {
    send(SIGTERM);
    expect(waitForEnd() <= longestStop, "the server ends within a second");
    if (fs::exists(logFile())) {
        expect(logged("application terminated") == 1, "the log tells of the end");
    }
}

std::size_t ServerProcess::descriptorCount() const {
    const fs::directory_iterator entries("/proc/" + std::to_string(pid_) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

long ServerProcess::residentKiB() const {
    std::ifstream in("/proc/" + std::to_string(pid_) + "/statm");
    long total = 0;
    long resident = 0;
    in >> total >> resident;
    return resident * (::sysconf(_SC_PAGESIZE) / 1024);
}

milliseconds ServerProcess::processorTime() const {
    std::istringstream fields(textOf("/proc/" + std::to_string(pid_) + "/stat"));
    std::string skipped;
    for (int i = 0; i < 13; ++i) {
        fields >> skipped;
    }
    long user = 0;
    long system = 0;
    fields >> user >> system;
    return milliseconds((user + system) * 1000 / ::sysconf(_SC_CLK_TCK));
}

bool ServerProcess::isAsleep() const {
    std::istringstream fields(textOf("/proc/" + std::to_string(pid_) + "/stat"));
    std::string number;
    std::string name;
    char state = '\0';
    fields >> number >> name >> state;
    return state == 'S';
}

std::vector<pid_t> ServerProcess::children() const {
    const std::string pid = std::to_string(pid_);
    std::ifstream in("/proc/" + pid + "/task/" + pid + "/children");
    return {std::istream_iterator<pid_t>(in), {}};
}

fs::path ServerProcess::logFile() const { return root_ / "program" / "cv0.log"; }

std::string ServerProcess::logText() const { return textOf(logFile()); }

std::size_t ServerProcess::logged(const std::string& text) const {
    const std::string log = logText();
    std::size_t count = 0;
    for (std::size_t at = log.find(text); at != std::string::npos; at = log.find(text, at + 1)) {
        ++count;
    }
    return count;
}

bool ServerProcess::findPort() {
    static const std::string mark = "Listening on 127.0.0.1:";
    const std::string log = logText();
    const std::size_t at = log.find(mark);
    if (at == std::string::npos || log.find('\n', at) == std::string::npos) {
        return false;
    }
    port_ = std::stoi(log.substr(at + mark.size()));
    return true;
}

}  // namespace soak
