// What is served, and to whom: everything that a connection needs to know to answer a request.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "corvane-play/files.h"
#include "corvane-play/limits.h"
#include "corvane-play/target.h"

namespace corvane::play {

struct Site {
    std::uint16_t port = 0;  ///< where it is served
    /// The first component of every address of a file. It keeps what is served from other users of
    /// the machine and from pages that guess addresses.
    std::string key;
    /// Wanted from every WebSocket; only the page is told it, in the script of its settings.
    std::string token;
    std::vector<Target> targets;              ///< what the bridge connects to
    std::vector<std::string> allowedOrigins;  ///< for --bridge
    std::optional<Files> movie;               ///< the movie and what lies beside it
    std::optional<Files> data;                ///< the program's own files, with Ruffle
    std::string page;      ///< a page of the user in `movie` that gets the script; may be empty
    std::string settings;  ///< the script of settings, generated
    Limits limits;

    bool servesPage() const { return movie.has_value(); }
};

/// A WebSocket that a request asks for.
struct SocketRequest {
    enum class Kind {
        Unknown,  ///< no such address, or a wrong token
        Alive,    ///< tells that the page is there
        Bridge,
    };
    Kind kind = Kind::Unknown;
    Target target;  ///< of a bridge; one of the site's
};

/// Reads "/alive/TOKEN" and "/bridge/TOKEN/HOST/PORT".
SocketRequest parseSocketRequest(std::string_view requestTarget, const Site& site);

/// The address of the bridge to a target, as parseSocketRequest() reads it behind the host.
std::string bridgePath(const Site& site, const Target& target);

/// What a request for a file leads to.
struct Found {
    ServedFile file;
    std::string name;  ///< of the file, for its type
    bool isSettings = false;
    bool isOwnPage = false;   ///< the program's own page, which gets the strict policy
    bool isUserPage = false;  ///< the user's page, which gets the script
};

/// Finds what an address names: "/KEY/" is the program's own page (or the user's),
/// "/KEY/corvane-play.js" the settings, "/KEY/corvane-play/..." the program's own files, and all
/// else below "/KEY/" what lies beside the movie. Nothing for any other address or file.
std::optional<Found> findFile(std::string_view requestTarget, const Site& site);

/// Puts the element of the script into a page of the user: at the beginning of its head, or after
/// the document type, so that it runs before any other; unless the page has one itself.
std::string withScript(std::string_view page, const std::string& key);

}  // namespace corvane::play
