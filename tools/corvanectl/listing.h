// The entries of a directory for people: in columns, or one on each line with all that is known.
#pragma once

#include <cstddef>
#include <ostream>
#include <span>
#include <string>
#include <vector>

#include "corvanectl/reply.h"

namespace corvane::ctl {

/// Whether the details of a reply are entries of a directory or of the network.
bool isListing(const Reply& reply);

/// The names made visible, sorted down the columns, as many columns as fit.
void printColumns(std::span<const ReplyDetail> entries, std::size_t width, std::ostream& out);

/// Kind, letters, size, date and name; "-" for what the server does not tell. The server tells no
/// sizes: it says 0. On a terminal the names are made visible.
void printLong(std::span<const ReplyDetail> entries, bool onTerminal, std::ostream& out);

}  // namespace corvane::ctl
