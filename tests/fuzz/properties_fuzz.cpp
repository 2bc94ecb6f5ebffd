// Property files against a plain reader: the same entries, in both kinds of store, and numbers
// within their bounds.
#include <cctype>
#include <cstdlib>
#include <map>
#include <set>

#include "fileutil/properties.h"
#include "fuzz/fuzz_target.h"
#include "fuzz/scratch.h"

namespace {

using namespace corvane;

constexpr std::size_t longestLine = 1023;

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\x03'; }

std::string withoutBlanks(const std::string& line) {
    std::size_t first = 0;
    while (first < line.size() && isBlank(line[first])) {
        ++first;
    }
    if (first == line.size()) {
        return line;  // has nothing but blanks, so no "=" either
    }
    std::size_t end = line.size();
    while (isBlank(line[end - 1])) {
        --end;
    }
    return line.substr(first, end - first);
}

std::string lowerCase(std::string text) {
    for (char& c : text) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    }
    return text;
}

struct Entries {
    std::map<std::string, std::string> read;
    // Of lines behind one that is too long.
    std::set<std::string> notRead;
};

Entries entriesOf(std::string_view file, bool caseSensitive) {
    Entries entries;
    std::vector<std::string> lines = fuzz::split(file, '\n');
    bool ended = false;
    for (std::string& line : lines) {
        ended = ended || line.size() > longestLine;
        line = withoutBlanks(line.substr(0, line.find('\0')));
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos && line[0] != '#') {
            const std::string spelled = line.substr(0, equals);
            const std::string key = caseSensitive ? spelled : lowerCase(spelled);
            if (ended) {
                entries.notRead.insert(key);
            } else {
                entries.read[key] = line.substr(equals + 1);
            }
        }
    }
    return entries;
}

void checkNumber(const Properties& store, const std::string& key, const std::string& value) {
    const char* text = value.c_str();
    char* end = nullptr;
    const long parsed = std::strtol(text, &end, 10);
    long expected = end == text ? 7 : parsed;
    expected = value == "true" ? 1 : value == "false" ? 0 : expected;
    expected = expected < INT32_MIN ? INT32_MIN : expected > INT32_MAX ? INT32_MAX : expected;
    fuzz::require(store.getInt(key, 7) == expected, "getInt reads the number at the start");
    fuzz::require(
        store.getBool(key, true) == (end == text && value != "false" ? true : expected != 0),
        "getBool is true for anything but zero");
}

void check(const std::string& path, std::string_view file, bool caseSensitive) {
    Properties store(caseSensitive);
    store.load(path);
    const Entries entries = entriesOf(file, caseSensitive);
    for (const std::string& key : entries.notRead) {
        fuzz::require(entries.read.contains(key) || store.getProperty(key) == nullptr,
                      "a line that is too long ends the file");
    }
    for (const auto& [key, value] : entries.read) {
        fuzz::require(store.getProperty(key) != nullptr, "every line with = is an entry");
        fuzz::require(store.getPropertyAsString(key, "") == value, "the last value of a key wins");
        checkNumber(store, key, value);
    }
    store.clear();
    fuzz::require(store.getProperty("PORT") == nullptr, "clear leaves nothing");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view file = fuzz::asText(data, size);
    const std::string path = fuzz::scratchFile(file);
    check(path, file, true);
    check(path, file, false);
    return 0;
}
