// Other applications and their windows, as the Accessibility API of macOS shows them. It needs the
// user's permission, and every question is a message that the other application has to answer.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/macos/core_foundation.h"

namespace corvane::wintool {

/// The application takes too long to answer, or has ended meanwhile.
class SilentApplication : public WindowError {
  public:
    using WindowError::WindowError;
};

/// The window, or the application as a whole, is gone.
class WindowGone : public WindowError {
  public:
    WindowGone() : WindowError("the window has disappeared") {}
};

/// Throws WindowError, which says where the user gives the permission, when this process lacks it;
/// macOS asks the user at the same time.
void requirePermission();

/// Gives every application one second for each answer.
void limitAnswerTime();

/// An application or one of its windows. Every function throws SilentApplication, WindowGone, and
/// WindowError when the permission is gone. What an element does not tell is missing, no error.
class Element {
  public:
    /// The application with this process number; `name` is for messages.
    Element(pid_t process, std::string name);

    /// The windows of an application on the spaces that can be seen now, and the minimised ones.
    std::vector<Element> windows() const;

    std::string title() const;
    std::optional<Rectangle> frame() const;

    /// Whether the flag that this attribute is, as in "AXMinimized", is set.
    bool has(const char* flag) const;

    bool canSet(const char* attribute) const;

    /// These throw WindowError, too, when the application refuses the request.
    void setPosition(Point position) const;
    void setSize(Size size) const;

  private:
    Element(Owned<AXUIElementRef> element, std::string application);

    Owned<CFTypeRef> copy(const char* attribute, CFTypeID type) const;
    bool read(const char* attribute, AXValueType type, void* value) const;
    void set(const char* attribute, AXValueType type, const void* value) const;
    void requireAnswer(AXError error) const;

    Owned<AXUIElementRef> element_;
    std::string application_;
};

}  // namespace corvane::wintool
