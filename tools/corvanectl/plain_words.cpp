#include "corvanectl/plain_words.h"

#include <new>
#include <stdexcept>
#include <string_view>

#include "cmdl/options.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

// "CommandLineException: Unrecognized option '-z'  [arg 1]" without its first and its last part.
std::string aboutTheCommandLine(const std::string& message) {
    const std::size_t begin = message.find(": ");
    const std::string text = begin == std::string::npos ? message : message.substr(begin + 2);
    return trim(text.substr(0, text.rfind(" [arg ")));
}

}  // namespace

std::string plainWords(const std::exception& failure) {
    if (const auto* wrong = dynamic_cast<const cmdl::CommandLineException*>(&failure)) {
        return aboutTheCommandLine(wrong->message);
    }
    if (const auto* known = dynamic_cast<const Exception*>(&failure)) {
        return known->message;
    }
    const bool isShort = dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ||
                         dynamic_cast<const std::length_error*>(&failure) != nullptr;
    return isShort ? "not enough memory" : "an unexpected failure";
}

}  // namespace corvane::ctl
