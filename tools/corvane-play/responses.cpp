#include "corvane-play/responses.h"

#include <boost/beast/http/field.hpp>

#include "platform/io.h"
#include "text/strings.h"

namespace corvane::play {
namespace {

// Movies may load from servers of their own; scripts and frames come from here alone.
constexpr const char* ownPagePolicy =
    "default-src 'none'; script-src 'self' 'wasm-unsafe-eval'; style-src 'self' 'unsafe-inline'; "
    "img-src * data: blob:; media-src * data: blob:; font-src 'self' data: blob:; "
    "connect-src * data: blob:; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
constexpr const char* messagePolicy = "default-src 'none'; frame-ancestors 'none'";
constexpr const char* userPagePolicy = "frame-ancestors 'self'";

const char* textOf(Policy policy) {
    switch (policy) {
        case Policy::OwnPage:
            return ownPagePolicy;
        case Policy::Message:
            return messagePolicy;
        case Policy::None:
            break;
    }
    return userPagePolicy;
}

}  // namespace

void protect(http::fields& headers, Policy policy) {
    headers.set(http::field::cache_control, "no-store");
    headers.set("X-Content-Type-Options", "nosniff");
    headers.set("X-Frame-Options", policy == Policy::None ? "SAMEORIGIN" : "DENY");
    headers.set("Content-Security-Policy", textOf(policy));
    headers.set("Cross-Origin-Resource-Policy", "same-origin");
    headers.set("Cross-Origin-Opener-Policy", "same-origin");
    headers.set("Referrer-Policy", "same-origin");
}

TextResponse messagePage(const Request& request, http::status status, std::string_view text) {
    TextResponse response(status, request.version());
    protect(response, Policy::Message);
    response.set(http::field::content_type, "text/html; charset=utf-8");
    response.body() = concatenate(
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta "
        "charset=\"utf-8\"><title>corvane-play</title>"
        "</head><body><h1>corvane-play</h1><p>",
        text, "</p></body></html>\n");
    response.keep_alive(request.keep_alive());
    response.content_length(response.body().size());
    return response;
}

std::string generatedText(const Found& found, const Site& site) {
    constexpr std::uint64_t longestPage = std::uint64_t{16} * 1024 * 1024;
    if (found.isSettings) {
        return site.settings;
    }
    if (found.file.size > longestPage) {
        return {};
    }
    std::string page(static_cast<std::size_t>(found.file.size), '\0');
    const ssize_t count = readAll(found.file.fd, page);
    if (count < 0) {
        return {};
    }
    page.resize(static_cast<std::size_t>(count));
    return withScript(page, site.key);
}

}  // namespace corvane::play
