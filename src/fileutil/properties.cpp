#include "fileutil/properties.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <istream>
#include <locale>
#include <streambuf>

#include "platform/guarded_open.h"
#include "platform/io.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane {
namespace {

constexpr std::size_t lineBufferSize = 1024;
constexpr std::size_t readBlock = std::size_t{16} * 1024;

const std::locale default_locale;

// Asking the locale for each letter would cost ten times as much.
const std::array<unsigned char, 256>& lowerCase() {
    static const auto table = [] {
        std::array<unsigned char, 256> lower{};
        const auto& letters = std::use_facet<std::ctype<char>>(default_locale);
        for (std::size_t c = 0; c < lower.size(); ++c) {
            lower[c] = static_cast<unsigned char>(letters.tolower(static_cast<char>(c)));
        }
        return lower;
    }();
    return table;
}

// A pipe would hold the program until somebody writes to it; it counts as missing.
OpenedFile openSettings(const std::string& path) {
    OpenedFile file = openGuarded(AT_FDCWD, path, O_RDONLY);
    if (file.fd == -1 || S_ISFIFO(file.info.st_mode)) {
        throw FileNotFoundException(path);
    }
    return file;
}

// Reads a file block by block, and lets signals in before each. What cannot be read ends it.
class FileBlocks : public std::streambuf {
  public:
    explicit FileBlocks(int file) : file_(file) {}

    /// Whether it ended because the program has to stop.
    bool wasStopped() const { return stopped_; }

  protected:
    int_type underflow() override {
        stopped_ = interrupted();
        const ssize_t count = stopped_ ? 0 : readSome(file_, block_);
        if (count <= 0) {
            return traits_type::eof();
        }
        setg(block_.data(), block_.data(), block_.data() + count);
        return traits_type::to_int_type(block_.front());
    }

  private:
    int file_;
    bool stopped_ = false;
    std::array<char, readBlock> block_;
};

}  // namespace

Properties props(false);

char charToLower(char c) { return static_cast<char>(lowerCase()[static_cast<unsigned char>(c)]); }

std::string tolower(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), charToLower);
    return lower;
}

bool less_string_ci::operator()(const std::string& a, const std::string& b) const {
    const auto& lower = lowerCase();
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        const unsigned char left = lower[static_cast<unsigned char>(a[i])];
        const unsigned char right = lower[static_cast<unsigned char>(b[i])];
        if (left != right) {
            return left < right;
        }
    }
    return a.size() < b.size();
}

Properties::Properties(bool caseSensitive) {
    if (caseSensitive) {
        map_ = std::make_unique<MapCS>();
    } else {
        map_ = std::make_unique<MapCI>();
    }
}

void Properties::load(const std::string& path) {
    const OpenedFile file = openSettings(path);
    // What cannot be read (a directory) or might never end (a device) counts as empty: a link to
    // /dev/null is a common way to have no settings.
    if (!S_ISREG(file.info.st_mode)) {
        return;
    }
    FileBlocks blocks(file.fd);
    std::istream in(&blocks);
    std::array<char, lineBufferSize> line{};
    while (in.getline(line.data(), line.size())) {
        storeLine(trim(line.data()));
    }
    if (blocks.wasStopped()) {
        throw IOException(format("read file '%s' error", path.c_str()), EINTR);
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
