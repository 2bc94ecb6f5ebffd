// What is played: a movie, or a page of the user.
#pragma once

#include <string>

#include "corvane-play/options.h"
#include "corvane-play/site.h"

namespace corvane::play {

struct Subject {
    std::string directory;  ///< with a "/" at its end
    std::string movie;      ///< a file's name in it; empty for a page
    std::string page;       ///< a file's name in it; empty for a movie
};

/// Finds what the command line names: a file is a page when its name ends with ".html" or ".htm",
/// a directory stands for its index.html or its only movie. Links to it are followed. Throws
/// Exception that tells a person what is missing.
Subject findSubject(const std::string& path);

/// The directory of the program's own files: "share/corvane-play" around its own directory. Throws
/// Exception that tells where it was looked for, also when Ruffle is missing in it.
std::string findData(const std::string& ownDirectory);

/// The script that tells the page what to play and where the bridge is: the settings, then the
/// program's own corvane-play.js. Throws FileNotFoundException.
std::string makeSettings(const Site& site, const Subject& subject, const Options& options,
                         std::uint16_t corvanePort, const std::string& dataDirectory);

}  // namespace corvane::play
