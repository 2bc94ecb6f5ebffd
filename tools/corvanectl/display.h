// Names as a terminal shows them: what would move the cursor or turn the writing around is made
// visible, and the columns that characters take are known.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace corvane::ctl {

/// With "\x1b" in place of a control character or of a byte that is no UTF-8, and "\u202e" in place
/// of a character that changes the direction of writing.
std::string visible(std::string_view text);

/// The columns that the result of visible() takes: two for a wide character of East Asia, none for
/// one that is put upon another.
std::size_t displayWidth(std::string_view text);

}  // namespace corvane::ctl
