// Reads a file of the server with every byte: "readText" leaves bytes 0x00 out, and "readByte"
// gives a single one.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "corvanectl/session.h"

namespace corvane::ctl {

/// What may be done about bytes that "readText" leaves out.
enum class LeftOut { Refused, ReadOneByOne };

/// Told how many of how many bytes are there, while they are read one by one.
using ByteProgress = std::function<void(std::size_t done, std::size_t total)>;

/// All bytes of a file whose text is `text`, as "readText" has given it. Throws Exception for a
/// file that has bytes 0x00 when they are refused (the message tells how many requests they would
/// take and how long), for one beyond 2 GiB, where "readByte" reaches no further, and for one that
/// changes meanwhile.
std::string completeText(Session& session, const std::string& file, std::string text,
                         LeftOut leftOut, const ByteProgress& progress);

}  // namespace corvane::ctl
