#include "corvane-play/options.h"

#include <algorithm>
#include <array>
#include <functional>

#include "corvane-play/guard.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

using Action = Options::Action;
using Browser = Options::Browser;

struct Choice {
    std::string_view name;
    bool takesValue;
    void (*apply)(Options& options, const std::string& value);
};

void addTarget(Options& options, const std::string& value) {
    const auto target = parseTarget(value);
    if (!target) {
        throw UsageError("--allow " + value + ": a host and a port are wanted, as in HOST:PORT");
    }
    options.allowedTargets.push_back(*target);
}

void addOrigin(Options& options, const std::string& value) {
    if (!isOrigin(value)) {
        throw UsageError("--allow-origin " + value +
                         ": an origin is wanted, as in https://www.example.com, in lower case and "
                         "without a path");
    }
    options.allowedOrigins.push_back(value);
}

void setFlashvars(Options& options, const std::string& value) {
    auto variables = parseFlashvars(value);
    if (!variables) {
        throw UsageError("--flashvars " + value + ": NAME=VALUE&NAME=VALUE is wanted");
    }
    options.flashvars = std::move(*variables);
}

void setPort(Options& options, const std::string& value) {
    options.port = parsePort(value);
    if (!options.port) {
        throw UsageError("--port " + value + ": a number from 1 to 65535 is wanted");
    }
}

constexpr std::array<Choice, 14> choices{{
    {"--help", false, [](Options& o, const std::string&) { o.action = Action::Help; }},
    {"-h", false, [](Options& o, const std::string&) { o.action = Action::Help; }},
    {"--version", false, [](Options& o, const std::string&) { o.action = Action::Version; }},
    {"-v", false, [](Options& o, const std::string&) { o.action = Action::Version; }},
    {"--no-open", false, [](Options& o, const std::string&) { o.browser = Browser::None; }},
    {"--kiosk", false, [](Options& o, const std::string&) { o.browser = Browser::Kiosk; }},
    {"--stay", false, [](Options& o, const std::string&) { o.stay = true; }},
    {"--scale", false, [](Options& o, const std::string&) { o.scale = true; }},
    {"--bridge", false, [](Options& o, const std::string&) { o.action = Action::Bridge; }},
    {"--allow", true, addTarget},
    {"--allow-origin", true, addOrigin},
    {"--flashvars", true, setFlashvars},
    {"--port", true, setPort},
    {"--config", true, [](Options& o, const std::string& value) { o.configuration = value; }},
}};

const Choice& choiceOf(std::string_view name) {
    const auto* const found = std::find_if(choices.begin(), choices.end(),
                                           [&](const Choice& c) { return c.name == name; });
    if (found == choices.end()) {
        throw UsageError(concatenate("unknown option ", name));
    }
    return *found;
}

void check(const Options& options) {
    if (options.action == Action::Bridge) {
        if (!options.subject.empty()) {
            throw UsageError("--bridge serves no files; leave '" + options.subject + "' out");
        }
        if (options.allowedOrigins.empty()) {
            throw UsageError(
                "--bridge needs --allow-origin, the origin of the page that may use it");
        }
    } else if (options.action == Action::Play) {
        if (options.subject.empty()) {
            throw UsageError("which movie, directory or page?");
        }
        if (!options.allowedOrigins.empty()) {
            throw UsageError("--allow-origin goes with --bridge");
        }
    }
}

}  // namespace

Options parseOptions(std::span<const char* const> words) {
    Options options;
    bool onlySubjects = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string_view word = words[i];
        if (onlySubjects || word.size() < 2 || word.front() != '-') {
            if (!options.subject.empty() || word.empty()) {
                throw UsageError(
                    concatenate("one movie, directory or page at a time: '", word, "'"));
            }
            options.subject = word;
        } else if (word == "--") {
            onlySubjects = true;
        } else {
            const std::size_t equals = word.find('=');
            const Choice& choice = choiceOf(word.substr(0, equals));
            const bool valueIsHere = equals != std::string_view::npos;
            if (choice.takesValue ? !valueIsHere && i + 1 == words.size() : valueIsHere) {
                throw UsageError(concatenate(
                    choice.name, choice.takesValue ? " needs a value" : " takes no value"));
            }
            std::string value;
            if (choice.takesValue) {
                value = valueIsHere ? word.substr(equals + 1) : words[++i];
            }
            choice.apply(options, value);
        }
    }
    check(options);
    return options;
}

}  // namespace corvane::play
