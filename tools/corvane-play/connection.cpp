#include "corvane-play/connection.h"

#include <boost/asio/dispatch.hpp>
#include <boost/beast/http/file_body.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/write.hpp>
#include <boost/beast/websocket/rfc6455.hpp>
#include <utility>

#include "corvane-play/alive.h"
#include "corvane-play/bridge.h"
#include "corvane-play/guard.h"
#include "corvane-play/responses.h"

namespace corvane::play {
namespace {

// Browsers tell who sends a request: the page itself, or the user, who types an address.
bool isForeignFetch(const Request& request) {
    const auto site = viewOf(request["Sec-Fetch-Site"]);
    return !site.empty() && site != "same-origin" && site != "none";
}

}  // namespace

Connection::Connection(Service& service, Tcp::socket socket)
    : service_(service), place_(service.connections), stream_(std::move(socket)) {}

void Connection::readRequest() {
    parser_.emplace();
    parser_->header_limit(static_cast<std::uint32_t>(service_.site.limits.header));
    stream_.expires_after(service_.site.limits.request);
    http::async_read_header(
        stream_, buffer_, *parser_,
        [self = shared_from_this()](error_code error, std::size_t) { self->onRequest(error); });
}

void Connection::onRequest(error_code error) {
    if (!error) {
        answer();
    } else if (error == http::error::header_limit) {
        refuse(http::status::request_header_fields_too_large, "The request is too long.");
    } else if (error != http::error::end_of_stream && error != http::error::partial_message &&
               error.category() == http::make_error_code(http::error::bad_method).category()) {
        refuse(http::status::bad_request, "This is no request that a browser sends.");
    } else {
        close();
    }
}

void Connection::answer() {
    const Request& request = parser_->get();
    if (request.count(http::field::host) != 1 ||
        !isOwnHost(viewOf(request[http::field::host]), service_.site.port)) {
        return refuse(http::status::forbidden, "This address belongs to another server.");
    }
    if (beast::websocket::is_upgrade(request)) {
        return answerSocket();
    }
    if (request.method() != http::verb::get && request.method() != http::verb::head) {
        return refuse(http::status::method_not_allowed, "Files can only be read here.");
    }
    if (!parser_->is_done() || isForeignFetch(request)) {
        return refuse(http::status::forbidden, "Another page may not read this.");
    }
    auto found = findFile(viewOf(request.target()), service_.site);
    if (!found) {
        return send(messagePage(request, http::status::not_found,
                                "There is no such file, or the address is one of an earlier start. "
                                "Open the address that corvane-play printed."));
    }
    if (found->isSettings || found->isUserPage) {
        return answerWithText(*found);
    }
    answerWithFile(std::move(*found));
}

void Connection::answerWithText(const Found& found) {
    const Request& request = parser_->get();
    TextResponse response(http::status::ok, request.version());
    protect(response, Policy::None);
    const std::string_view type = mimeType(found.name);
    response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
    response.body() = generatedText(found, service_.site);
    response.content_length(response.body().size());
    response.keep_alive(request.keep_alive());
    if (request.method() == http::verb::head) {
        response.body().clear();
    }
    send(std::move(response));
}

void Connection::answerWithFile(Found found) {
    const Request& request = parser_->get();
    const auto fill = [&](auto& response) {
        protect(response, found.isOwnPage ? Policy::OwnPage : Policy::None);
        const std::string_view type = mimeType(found.name);
        response.set(http::field::content_type, beast::string_view(type.data(), type.size()));
        response.content_length(found.file.size);
        response.keep_alive(request.keep_alive());
    };
    if (request.method() == http::verb::head) {
        http::response<http::empty_body> response(http::status::ok, request.version());
        fill(response);
        return send(std::move(response));
    }
    http::file_body::value_type body;
    beast::file_posix file;
    file.native_handle(found.file.fd.release());
    error_code error;
    body.reset(std::move(file), error);
    if (error) {
        return refuse(http::status::internal_server_error, "The file cannot be read.");
    }
    found.file.size = body.size();
    http::response<http::file_body> response(http::status::ok, request.version());
    response.body() = std::move(body);
    fill(response);
    send(std::move(response));
}

void Connection::answerSocket() {
    const Request& request = parser_->get();
    const Site& site = service_.site;
    if (request.count(http::field::origin) != 1 ||
        !isAllowedOrigin(viewOf(request[http::field::origin]), viewOf(request[http::field::host]),
                         site.servesPage(), site.allowedOrigins)) {
        return refuse(http::status::forbidden, "A page of another origin may not use the bridge.");
    }
    const SocketRequest wanted = parseSocketRequest(viewOf(request.target()), site);
    if (wanted.kind == SocketRequest::Kind::Unknown) {
        return refuse(http::status::forbidden, "The bridge leads nowhere else.");
    }
    if (wanted.kind == SocketRequest::Kind::Alive) {
        return std::make_shared<Alive>(service_, std::move(stream_))->start(parser_->release());
    }
    if (service_.bridges >= site.limits.bridges) {
        return refuse(http::status::service_unavailable, "There are too many connections.");
    }
    std::make_shared<Bridge>(service_, std::move(stream_), wanted.target)
        ->start(parser_->release());
}

void Connection::refuse(http::status status, std::string_view why) {
    TextResponse response = messagePage(parser_->get(), status, why);
    response.keep_alive(false);  // what follows may be the body of this request
    send(std::move(response));
}

template <typename Response>
void Connection::send(Response response) {
    auto kept = std::make_shared<Response>(std::move(response));
    stream_.expires_after(service_.site.limits.request);
    const auto sent = [self = shared_from_this(), kept](error_code error, std::size_t) {
        if (error || kept->need_eof()) {
            self->close();
        } else {
            self->readRequest();
        }
    };
    if (parser_->get().method() == http::verb::head) {
        auto serializer =
            std::make_shared<http::serializer<false, typename Response::body_type>>(*kept);
        http::async_write_header(
            stream_, *serializer,
            [sent, serializer](error_code error, std::size_t count) { sent(error, count); });
    } else {
        http::async_write(stream_, *kept, sent);
    }
}

void Connection::close() {
    error_code ignored;
    stream_.socket().shutdown(Tcp::socket::shutdown_send, ignored);
}

}  // namespace corvane::play
