#include "cvnwinfo/arguments.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <system_error>
#include <utility>

#include "cvnwinfo/errors.h"
#include "cvnwinfo/title.h"

namespace corvane::wintool {

const std::string_view helpText =
    "usage: cvnwinfo -g -n TITLE                      print x,y,width,height of a window\n"
    "       cvnwinfo -a                               print width,height of the screen\n"
    "       cvnwinfo -n TITLE [-p X,Y] [-s WIDTH,HEIGHT]   move and resize a window\n"
    "       cvnwinfo --help | --version\n";

namespace {

using Coordinate = std::int16_t;

// What the words say before it is known whether they go together.
struct Words {
    bool report = false;
    bool screen = false;
    std::optional<std::string_view> title;
    std::optional<std::string_view> position;
    std::optional<std::string_view> size;
};

void takeValue(std::optional<std::string_view>& value, std::string_view option,
               std::span<const char* const>& rest) {
    if (value) {
        throw UsageError("option " + std::string(option) + " is given twice");
    }
    if (rest.empty()) {
        throw UsageError("option " + std::string(option) + " needs a value");
    }
    value = rest.front();
    rest = rest.subspan(1);
}

Words readWords(std::span<const char* const> rest) {
    Words words;
    while (!rest.empty()) {
        const std::string_view option = rest.front();
        rest = rest.subspan(1);
        if (option == "-g") {
            words.report = true;
        } else if (option == "-a") {
            words.screen = true;
        } else if (option == "-n") {
            takeValue(words.title, option, rest);
        } else if (option == "-p") {
            takeValue(words.position, option, rest);
        } else if (option == "-s") {
            takeValue(words.size, option, rest);
        } else {
            throw UsageError("unknown option " + inQuotes(option));
        }
    }
    return words;
}

std::optional<int> number(std::string_view text, Coordinate lowest) {
    Coordinate value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < lowest) {
        return std::nullopt;
    }
    return value;
}

// "a,b", each number at least `lowest`; `what` and `range` are for the message.
std::pair<int, int> numberPair(std::string_view text, Coordinate lowest, std::string_view what,
                               std::string_view range) {
    const std::size_t comma = text.find(',');
    if (comma != std::string_view::npos) {
        const std::optional<int> first = number(text.substr(0, comma), lowest);
        const std::optional<int> second = number(text.substr(comma + 1), lowest);
        if (first && second) {
            return {*first, *second};
        }
    }
    throw UsageError("bad " + std::string(what) + " " + inQuotes(text) + ": expected " +
                     std::string(range));
}

Point parsePosition(std::string_view text) {
    const auto [x, y] = numberPair(text, std::numeric_limits<Coordinate>::min(), "position",
                                   "X,Y of -32768 to 32767");
    return {x, y};
}

Size parseSize(std::string_view text) {
    const auto [width, height] = numberPair(text, 1, "size", "WIDTH,HEIGHT of 1 to 32767");
    return {width, height};
}

Arguments withoutWindow(Action action) {
    Arguments arguments;
    arguments.action = action;
    return arguments;
}

Arguments reportScreen(const Words& words) {
    if (words.report || words.title || words.position || words.size) {
        throw UsageError("option -a stands alone");
    }
    return withoutWindow(Action::reportScreen);
}

Arguments useWindow(const Words& words) {
    if (!words.title) {
        throw UsageError("no window given: option -n TITLE is missing");
    }
    if (words.title->empty()) {
        throw UsageError("the window title is empty");
    }
    if (words.report && (words.position || words.size)) {
        throw UsageError("option -g does not go with -p and -s");
    }
    Arguments arguments;
    arguments.action = words.report ? Action::reportWindow : Action::placeWindow;
    arguments.title = *words.title;
    if (words.position) {
        arguments.position = parsePosition(*words.position);
    }
    if (words.size) {
        arguments.size = parseSize(*words.size);
    }
    return arguments;
}

}  // namespace

Arguments parseArguments(std::span<const char* const> words) {
    if (words.size() == 1 && std::string_view(words[0]) == "--help") {
        return withoutWindow(Action::showHelp);
    }
    if (words.size() == 1 && std::string_view(words[0]) == "--version") {
        return withoutWindow(Action::showVersion);
    }
    const Words given = readWords(words);
    return given.screen ? reportScreen(given) : useWindow(given);
}

}  // namespace corvane::wintool
