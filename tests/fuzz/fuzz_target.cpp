#include "fuzz/fuzz_target.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace corvane::fuzz {

void require(bool kept, const char* promise) {
    if (!kept) {
        static_cast<void>(std::fprintf(stderr, "broken promise: %s\n", promise));
        std::abort();
    }
}

std::string_view asText(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

unsigned char Input::byte() {
    if (rest_.empty()) {
        return 0;
    }
    const auto value = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return value;
}

std::string_view Input::field(char end) {
    const std::string_view text = rest_.substr(0, rest_.find(end));
    rest_.remove_prefix(std::min(rest_.size(), text.size() + 1));
    return text;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text) {
        if (c == separator) {
            pieces.emplace_back();
        } else {
            pieces.back() += c;
        }
    }
    return pieces;
}

}  // namespace corvane::fuzz
