#include "fileutil/properties.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <functional>
#include <locale>

#include "platform/guarded_open.h"
#include "text/byte_buffer.h"
#include "text/exception.h"
#include "text/memory_stream.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t lineBufferSize = 1024;
constexpr std::size_t readBlock = std::size_t{16} * 1024;

const std::locale default_locale;

// Kept, since finding it costs a hundred times as much as lowering a letter.
const std::ctype<char>& letters() {
    static const auto& facet = std::use_facet<std::ctype<char>>(default_locale);
    return facet;
}

// A pipe would hold the program until somebody writes to it; it counts as missing. What cannot be
// read (a directory) or might never end (a device) counts as empty: a link to /dev/null is a common
// way to have no settings.
ByteBuffer readWhole(const std::string& path) {
    const OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd == -1 || S_ISFIFO(file.info.st_mode)) {
        throw FileNotFoundException(path);
    }
    ByteBuffer text;
    if (!S_ISREG(file.info.st_mode)) {
        return text;
    }
    while (true) {
        const ssize_t count = ::read(file.fd, text.room(readBlock), readBlock);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return text;
        }
        text.commit(static_cast<std::size_t>(count));
    }
}

}  // namespace

Properties props(false);

char charToLower(char c) { return letters().tolower(c); }

std::string tolower(const std::string& text) {
    std::string lower = text;
    letters().tolower(lower.data(), lower.data() + lower.size());
    return lower;
}

bool less_string_ci::operator()(const std::string& a, const std::string& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [](char left, char right) {
                                            return static_cast<unsigned char>(charToLower(left)) <
                                                   static_cast<unsigned char>(charToLower(right));
                                        });
}

Properties::Properties(bool caseSensitive) {
    if (caseSensitive) {
        map_ = std::make_unique<MapCS>();
    } else {
        map_ = std::make_unique<MapCI>();
    }
}

void Properties::load(const std::string& path) {
    const ByteBuffer text = readWhole(path);
    MemoryStream in(text.view());
    std::array<char, lineBufferSize> line{};
    while (in.getline(line.data(), line.size())) {
        storeLine(trim(line.data()));
    }
}

void Properties::storeLine(std::string_view line) {
    const std::size_t equals = line.find('=');
    if (line.empty() || line.front() == '#' || equals == std::string_view::npos) {
        return;
    }
    setProperty(std::string(line.substr(0, equals)), std::string(line.substr(equals + 1)));
}

std::string Properties::getPropertyAsString(const std::string& key, const std::string& def) const {
    const char* value = getProperty(key);
    return value == nullptr ? def : value;
}

std::string Properties::getString(const std::string& key, const std::string& def) const {
    return getPropertyAsString(key, def);
}

int Properties::getInt(const std::string& key, int def) const {
    const std::string value = getPropertyAsString(key, "");
    if (value == "true") {
        return 1;
    }
    if (value == "false") {
        return 0;
    }
    return static_cast<int>(std::clamp<long>(toLong(value, def), INT_MIN, INT_MAX));
}

bool Properties::getBool(const std::string& key, bool def) const {
    return getInt(key, def ? 1 : 0) != 0;
}

void Properties::setInt(const std::string& key, int value) {
    setProperty(key, format("%d", value));
}

void Properties::setBool(const std::string& key, bool value) {
    setProperty(key, value ? "true" : "false");
}

}  // namespace corvane
