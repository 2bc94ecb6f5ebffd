// A screen with windows for tests, behind stand-ins of the framework functions that the window tool
// uses; they are linked instead of the frameworks. Calls that reach the window server or another
// application are noted with their arguments, in order.
#pragma once

#include <ApplicationServices/ApplicationServices.h>

#include <map>
#include <string>
#include <vector>

namespace corvane::standins {

struct FakeWindow {
    std::string title;
    CGRect frame = {};
    pid_t process = 1;
    int layer = 0;
    bool onScreen = true;
    bool described = true;  ///< the window server tells anything of it but that it is there
    bool minimised = false;
    bool fullScreen = false;
    bool movable = true;
    bool resizable = true;
    /// The application lets the window have no larger size.
    CGSize largest = {10000, 10000};
    /// How often the frame has to be read after a change until it shows.
    int delay = 0;
    bool closesWhenMoved = false;
    /// What a call with this attribute answers instead of doing its work, for setting it as "set
    /// AXSize".
    std::map<std::string, AXError> errors = {};
    /// The attribute of which the value is of another kind than it should be.
    std::string oddAttribute = {};

    CGRect target = {};  ///< where the frame goes after `pending` further looks
    int pending = 0;
};

struct World {
    bool session = true;
    bool trusted = true;
    bool listsWindows = true;
    /// Applications list numbers instead of windows.
    bool numbersForWindows = false;
    /// No call of the Accessibility API that asks an application returns.
    bool stuck = false;
    CGRect mainDisplay = {{0, 0}, {1440, 900}};
    /// From the frontmost one back; the application of process 7 is called "App 7", and tells of
    /// its windows in the opposite order.
    std::vector<FakeWindow> windows;
    /// What asking these processes for their windows answers.
    std::map<pid_t, AXError> applicationErrors;
};

inline World world;

/// One line a call, as in "AXUIElementSetAttributeValue(window 'Player', AXSize, 640x480)".
inline std::vector<std::string> calls;

/// An empty screen, no calls, and no objects.
void reset();

}  // namespace corvane::standins
