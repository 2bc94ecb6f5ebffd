#include "text/exception.h"

#include <utility>

namespace corvane {

Exception::Exception(std::string text) : message(std::move(text)) {}

IOException::IOException(const std::string& text, int errorCode)
    : Exception(iomsg(text, errorCode)), code(errorCode) {}

std::string IOException::iomsg(const std::string& text, int code) {
    return text + " (" + std::to_string(code) + ")";
}

FileNotFoundException::FileNotFoundException(const std::string& missing)
    : Exception("File not found: " + missing), path(missing) {}

}  // namespace corvane
