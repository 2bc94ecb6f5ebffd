// The message of the exception that a piece of code throws.
#pragma once

#include <string>

#include "text/exception.h"

namespace corvane::test {

/// Only exceptions of type `Expected` (or derived from it) are caught.
template <typename Expected = Exception, typename Work>
std::string thrownBy(Work work) {
    try {
        work();
    } catch (const Expected& e) {
        return e.what();
    }
    return "nothing was thrown";
}

/// "TEXT (CODE)", as an IOException shows it.
inline std::string withCode(const std::string& text, int code) {
    return IOException::iomsg(text, code);
}

}  // namespace corvane::test
