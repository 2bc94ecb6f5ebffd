#include "corvane-play/browser.h"

#include <stdlib.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>
#include <vector>

#include "fileutil/file_operations.h"
#include "fileutil/paths.h"
#include "platform/process.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

// In PATH, or where macOS has applications.
constexpr std::array<const char*, 12> browsers{
    "chromium",
    "chromium-browser",
    "google-chrome",
    "google-chrome-stable",
    "microsoft-edge",
    "firefox",
    "firefox-esr",
    "/Applications/Chromium.app/Contents/MacOS/Chromium",
    "/Applications/Google Chrome.app/Contents/MacOS/Google Chrome",
    "/Applications/Microsoft Edge.app/Contents/MacOS/Microsoft Edge",
    "/Applications/Firefox.app/Contents/MacOS/firefox",
    "/Applications/Firefox.app/Contents/MacOS/firefox-bin",
};

std::string findFirst(std::span<const char* const> names) {
    for (const char* const name : names) {
        std::string path = findProgram(name);
        if (!path.empty()) {
            return path;
        }
    }
    return "";
}

std::string makeProfile() {
    std::string path = getTempDirectory() + "corvane-play-XXXXXX";
    if (::mkdtemp(path.data()) == nullptr) {
        throw IOException("cannot create a profile for the browser", errno);
    }
    return path;
}

}  // namespace

std::vector<std::string> kioskArguments(const std::string& browser, const std::string& profile,
                                        const std::string& address) {
    if (startsWith(getFileName(browser), "firefox")) {
        return {browser, "--no-remote", "--profile", profile, "--kiosk", address};
    }
    return {browser,
            "--kiosk",
            "--user-data-dir=" + profile,
            "--no-first-run",
            "--no-default-browser-check",
            "--disable-session-crashed-bubble",
            "--autoplay-policy=no-user-gesture-required",
            address};
}

Kiosk::Kiosk(const std::string& address) {
    const std::string browser = findFirst(browsers);
    if (browser.empty()) {
        throw Exception("neither Chromium nor Chrome, Edge or Firefox is installed");
    }
    profile_ = makeProfile();
    process_.emplace(kioskArguments(browser, profile_, address), Process::Output::Discarded);
}

Kiosk::~Kiosk() {
    process_.reset();
    try {
        removeDirectory(profile_, true);
    } catch (const Exception&) {
        // What a browser that is just ending still writes stays; nobody is there to be told.
    }
}

void openInDefaultBrowser(const std::string& address) {
    constexpr std::array<const char*, 2> openers{"xdg-open", "open"};
    const std::string opener = findFirst(openers);
    if (opener.empty() || startProgram({opener, address}, StandardStreams::NullDevice) == -1) {
        throw Exception(
            "no browser can be opened; install xdg-utils, or open the address yourself");
    }
}

}  // namespace corvane::play
