#include "corvane-play/subject.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <vector>

#include "corvane-play/percent.h"
#include "corvane-play/real_path.h"
#include "fileutil/open_directory.h"
#include "fileutil/paths.h"
#include "fileutil/properties.h"
#include "launch/movie_size.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

bool exists(const std::string& path) { return getFileMode(path) != 0; }

std::string endingOf(const std::string& name) { return corvane::tolower(getExtension(name)); }

Subject inDirectory(const std::string& directory) {
    std::vector<std::string> movies;
    const FileDesc opened = openDirectory(directory, DirectoryAccess::Read);
    for (const auto& [name, isFolder] : readEntries(opened, directory)) {
        if (name == "index.html" || name == "index.htm") {
            return {slashPath(directory), "", name};
        }
        if (endingOf(name) == "swf" && !isFolder && !startsWith(name, ".")) {
            movies.push_back(name);
        }
    }
    if (movies.size() != 1) {
        throw Exception(directory + (movies.empty()
                                         ? ": there is neither an index.html nor a movie"
                                         : ": there is more than one movie, which one?"));
    }
    return {slashPath(directory), movies.front(), ""};
}

// The bridge of each host and port that the movie may name.
std::string socketsOf(const Site& site, std::uint16_t corvanePort) {
    std::string list;
    const auto add = [&](const std::string& host, const Target& target) {
        list += concatenate(list.empty() ? "" : ",", "{\"host\":", jsonString(host),
                            ",\"port\":", std::to_string(target.port),
                            ",\"path\":", jsonString(bridgePath(site, target)), "}");
    };
    for (const Target& target : site.targets) {
        add(target.host, target);
        if (target == Target{"127.0.0.1", corvanePort}) {
            add("localhost", target);
        }
    }
    return "[" + list + "]";
}

}  // namespace

Subject findSubject(const std::string& path) {
    const std::string real = realPath(path);
    if (real.empty()) {
        throw Exception(path + ": " + std::strerror(errno));
    }
    if (isDirectory(real)) {
        return inDirectory(real);
    }
    const std::string name = getFileName(real);
    if (!S_ISREG(getFileMode(real)) || startsWith(name, ".")) {
        throw Exception(path + ": this is neither a movie nor a page");
    }
    const std::string ending = endingOf(name);
    const bool isPage = ending == "html" || ending == "htm";
    return {getDirectory(real), isPage ? "" : name, isPage ? name : ""};
}

std::string findData(const std::string& ownDirectory) {
    std::string tried;
    for (const char* const place : {"../share/corvane-play/", "share/corvane-play/"}) {
        std::string directory = ownDirectory + place;
        if (exists(directory + "player.html")) {
            if (!exists(directory + "ruffle/ruffle.js")) {
                throw Exception("Ruffle is missing in " + directory +
                                "ruffle; a build fetches it with tools/corvane-play/fetch-ruffle");
            }
            return directory;
        }
        tried += "\n  " + directory;
    }
    throw Exception("the program's own files are missing; looked for in" + tried);
}

std::string makeSettings(const Site& site, const Subject& subject, const Options& options,
                         std::uint16_t corvanePort, const std::string& dataDirectory) {
    std::ifstream file(dataDirectory + "corvane-play.js");
    if (!file) {
        throw FileNotFoundException(dataDirectory + "corvane-play.js");
    }
    std::ostringstream script;
    script << file.rdbuf();
    const MovieSize size = readSWFSize((subject.directory + subject.movie).c_str());
    return concatenate(
        "window.corvanePlay = {\"movie\":", jsonString(escapeComponent(subject.movie)),
        ",\"width\":", std::to_string(size.width), ",\"height\":", std::to_string(size.height),
        ",\"scale\":", options.scale ? "true" : "false",
        ",\"flashvars\":", jsonObject(options.flashvars),
        ",\"sockets\":", socketsOf(site, corvanePort),
        ",\"alive\":", jsonString("/alive/" + site.token),
        ",\"ruffle\":", jsonString("/" + site.key + "/corvane-play/ruffle/ruffle.js"), "};\n",
        script.str());
}

}  // namespace corvane::play
