// What every fuzz target is made of: the entry point that libFuzzer calls, a way to fail that names
// the broken promise, and a reader that takes an input apart.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace corvane::fuzz {

/// Ends the process, with `promise` on standard error, unless it is kept.
void require(bool kept, const char* promise);

/// The input as characters.
std::string_view asText(const std::uint8_t* data, std::size_t size);

/// Takes an input apart from its front. An exhausted input gives zeros and empty texts.
class Input {
  public:
    explicit Input(std::string_view bytes) : rest_(bytes) {}

    bool empty() const { return rest_.empty(); }
    unsigned char byte();
    /// All up to the next `end`, which is dropped.
    std::string_view field(char end);
    std::string_view rest() const { return rest_; }

  private:
    std::string_view rest_;
};

/// Splits at every `separator`; as many pieces as there are separators, and one.
std::vector<std::string> split(std::string_view text, char separator);

}  // namespace corvane::fuzz
