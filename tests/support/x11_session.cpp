#include "support/x11_session.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

namespace corvane::x11test {

namespace {

// Without keys and menus; the default theme.
constexpr std::string_view openboxConfiguration =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
</openbox_config>
)";

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), {}};
}

Descriptor createFile(const std::filesystem::path& file) {
    return Descriptor(open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
}

// The number that the X server prints when it is ready; empty when it ended instead.
std::string readDisplayNumber(int descriptor) {
    std::string line;
    char byte = 0;
    constexpr int limit = std::chrono::milliseconds(patience).count();
    for (pollfd ready = {descriptor, POLLIN, 0}; poll(&ready, 1, limit) == 1;) {
        if (read(descriptor, &byte, 1) != 1) {
            return {};
        }
        if (byte == '\n') {
            return line;
        }
        line += byte;
    }
    throw std::runtime_error("Xvfb did not become ready in time");
}

}  // namespace

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "x11-session-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("cannot create a directory like " + name);
    }
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

X11Session::X11Session(Manager manager) {
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"}) {
        environment_.set(name, home_.path().string());
    }
    environment_.set("XAUTHORITY", (home_.path() / "no-authority").string());
    environment_.set("LC_ALL", "C.UTF-8");
    startServer();
    environment_.set("DISPLAY", display_);
    if (manager == Manager::openbox) {
        startManager();
    }
}

void X11Session::startServer() {
    const std::filesystem::path log = home_.path() / "Xvfb.log";
    const std::string screen =
        std::to_string(screenWidth) + "x" + std::to_string(screenHeight) + "x24";
    const std::string second =
        std::to_string(secondScreenWidth) + "x" + std::to_string(secondScreenHeight) + "x24";
    // Two servers that start at once may pick the same number; the one that loses ends.
    constexpr int attempts = 5;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        Pipe pipe;
        server_ = std::make_unique<ChildProcess>(
            std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", screen, "-screen",
                                     "1", second, "-nolisten", "tcp", "-noreset"},
            environment_, pipe.writeEnd.number(), createFile(log).number());
        pipe.writeEnd.close();
        const std::string number = readDisplayNumber(pipe.readEnd.number());
        if (!number.empty()) {
            display_ = ":" + number;
            return;
        }
    }
    throw std::runtime_error("Xvfb does not start: " + contentOf(log));
}

void X11Session::killManager() {
    if (manager_) {
        manager_->kill();
        manager_.reset();
    }
}

// A window that is mapped while openbox is still starting may never be taken over, so its last
// step, the start-up command, is what tells that it is ready.
void X11Session::startManager() {
    const std::filesystem::path log = home_.path() / "openbox.log";
    const std::filesystem::path configuration = home_.path() / "rc.xml";
    const std::filesystem::path ready = home_.path() / "openbox.ready";
    std::ofstream(configuration) << openboxConfiguration;
    const Descriptor output = createFile(log);
    manager_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"openbox", "--sm-disable", "--config-file", configuration.string(),
                                 "--startup", "touch " + ready.string()},
        environment_, output.number(), output.number());
    const bool settled =
        waitUntil([&] { return manager_->hasEnded() || std::filesystem::exists(ready); });
    if (!settled || manager_->hasEnded()) {
        throw std::runtime_error("openbox does not start: " + contentOf(log));
    }
}

}  // namespace corvane::x11test
