// The replies to requests, with the headers that keep other pages away from what they carry.
#pragma once

#include <string>
#include <string_view>

#include "corvane-play/net.h"
#include "corvane-play/site.h"

namespace corvane::play {

/// How much a page may load and run.
enum class Policy {
    None,     ///< the user's own page decides
    OwnPage,  ///< the program's page: its own scripts, data of any server
    Message,  ///< a page that tells what went wrong: nothing
};

/// Sets what every reply has: nothing is kept, guessed, framed or handed to another origin.
void protect(http::fields& headers, Policy policy);

/// A page for a person that tells why there is nothing else.
TextResponse messagePage(const Request& request, http::status status, std::string_view text);

/// The settings, or the user's page with the script, which is read into memory. An empty text for a
/// page of more than 16 MiB or one that cannot be read.
std::string generatedText(const Found& found, const Site& site);

}  // namespace corvane::play
