#include "corvane-play/real_path.h"

#include <stdlib.h>

#include <memory>

namespace corvane::play {

std::string realPath(const std::string& path) {
    const std::unique_ptr<char, decltype(&::free)> real(::realpath(path.c_str(), nullptr), &::free);
    return real == nullptr ? "" : real.get();
}

}  // namespace corvane::play
