// A private X11 session for tests: an Xvfb on a display number that it picks itself, an openbox
// (or no window manager), and a home directory of its own. Nothing in it depends on GoogleTest.
//
//     X11Session session;                                    // Xvfb and openbox are ready now
//     TestWindow window(session, {.wmName = "Some title"});  // x11_window.h; placed and shown now
//     runProgram({"xwininfo", "-root"}, session.environment());
//
// Needs the programs Xvfb and openbox along PATH, and no privileges. Failures are thrown as
// std::runtime_error; a program that could not start is quoted in it.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "support/x11_process.h"

namespace corvane::x11test {

/// A new directory that goes, with all that is in it, when the object goes.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

class X11Session {
  public:
    enum class Manager { openbox, none };

    static constexpr int screenWidth = 1024;
    static constexpr int screenHeight = 768;
    /// Of the one that is left to tests: DISPLAY names it with ".1" at its end.
    static constexpr int secondScreenWidth = 800;
    static constexpr int secondScreenHeight = 600;

    /// Returns when the X server takes connections and the window manager, if one is asked for,
    /// has announced itself.
    explicit X11Session(Manager manager = Manager::openbox);

    /// The display's name, such as ":7".
    const std::string& display() const { return display_; }

    /// What programs of this session are to be started with: DISPLAY and the private home.
    const Environment& environment() const { return environment_; }

    bool hasManager() const { return manager_ != nullptr; }

    /// Lets the window manager die without cleaning up: the windows stay, and so does what it
    /// announced of itself on the root window.
    void killManager();

  private:
    void startServer();
    void startManager();

    TemporaryFolder home_;
    Environment environment_;
    std::string display_;
    std::unique_ptr<ChildProcess> server_;
    std::unique_ptr<ChildProcess> manager_;
};

}  // namespace corvane::x11test
