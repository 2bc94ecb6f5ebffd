// What a browser sends to the player, as far as its own code reads it: an address becomes
// components of a path or a bridge, the first line of the input; the second is the page that gets
// the script, the variables of a movie, and an origin.
#include <algorithm>
#include <string>

#include "corvane-play/flashvars.h"
#include "corvane-play/guard.h"
#include "corvane-play/percent.h"
#include "corvane-play/request_path.h"
#include "corvane-play/site.h"
#include "fuzz/fuzz_target.h"
#include "text/strings.h"

namespace {

using namespace corvane;
using corvane::fuzz::require;

play::Site makeSite() {
    play::Site site;
    site.key = "key";
    site.token = "token";
    site.targets = {{"127.0.0.1", 54321}, {"::1", 7}};
    return site;
}

void checkComponents(std::string_view target) {
    const auto components = play::pathComponents(target);
    if (!components) {
        return;
    }
    std::string again;
    for (const std::string& component : *components) {
        require(!component.starts_with('.'), "no component is hidden or leads up");
        require(component.find_first_of(std::string_view("/\\\0", 3)) == std::string::npos,
                "a component is a name");
        require(!component.empty() || &component == &components->back(),
                "only the last component is empty");
        again += concatenate("/", play::escapeComponent(component));
    }
    require(play::pathComponents(again) == components, "what is escaped is read as it was");
}

void checkSocket(std::string_view target) {
    static const play::Site site = makeSite();
    const play::SocketRequest request = play::parseSocketRequest(target, site);
    using Kind = play::SocketRequest::Kind;
    if (request.kind == Kind::Unknown) {
        return;
    }
    const auto components = play::pathComponents(target);
    require(components && (*components)[1] == site.token, "nothing is open without the token");
    require(request.kind == Kind::Alive || std::find(site.targets.begin(), site.targets.end(),
                                                     request.target) != site.targets.end(),
            "a bridge leads to a target of the site");
}

void checkTexts(const std::string& text) {
    const std::string page = play::withScript(text, "key");
    require(page.find("corvane-play.js") != std::string::npos, "every page has the script");
    require(page.size() >= text.size(), "nothing of a page is lost");
    if (const auto variables = play::parseFlashvars(text)) {
        require(play::jsonObject(*variables).find('<') == std::string::npos,
                "no variable can end a script");
    }
    if (const auto target = play::parseTarget(text)) {
        require(play::parseTarget(play::toString(*target)) == target,
                "a target is read as written");
    }
    require(!play::isOwnHost(text, 1) || text.ends_with(":1"), "the own host has the own port");
    require(!play::isOrigin(text) || text.find("://") != std::string::npos,
            "an origin has a scheme");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(fuzz::asText(data, size));
    const std::string_view target = input.field('\n');
    checkComponents(target);
    checkSocket(target);
    checkTexts(std::string(input.rest()));
    return 0;
}
