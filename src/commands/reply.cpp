// The reply document: one line of XML, whose exact bytes applications depend on.
#include <cstddef>
#include <utility>
#include <vector>

#include "commands/corvane_server.h"

namespace corvane {
namespace {

// A text of at least this size is sent from where it is instead of being copied into the document.
constexpr std::size_t largeText = std::size_t{32} * 1024;

constexpr std::array<std::string_view, 5> entryKinds{"file", "directory", "share", "server",
                                                     "domain"};

class ReplyDocument {
  public:
    void reserve(std::size_t size) { text_.reserve(size); }

    ReplyDocument& operator<<(std::string_view piece) {
        text_ += piece;
        return *this;
    }

    void appendLarge(std::string_view piece) {
        if (piece.size() < largeText) {
            text_ += piece;
        } else {
            large_.emplace_back(text_.size(), piece);
        }
    }

    std::vector<std::string_view> pieces() const {
        std::vector<std::string_view> all;
        std::size_t from = 0;
        for (const auto& [at, piece] : large_) {
            all.push_back(std::string_view(text_).substr(from, at - from));
            all.push_back(piece);
            from = at;
        }
        all.push_back(std::string_view(text_).substr(from));
        return all;
    }

  private:
    std::string text_;
    std::vector<std::pair<std::size_t, std::string_view>> large_;
};

void appendDetail(ReplyDocument& document, const CorvaneDetail& detail) {
    document << "<Detail id=\"" << detail.id << "\" extra=\"" << detail.extra << "\"";
    if (!detail.date.empty()) {
        document << " date=\"" << detail.date << "\"";
    }
    if (!detail.size.empty()) {
        document << " size=\"" << detail.size << "\"";
    }
    if (detail.isText) {
        document << ">";
        document.appendLarge(detail.value);
        document << "</Detail>";
    } else {
        document << " Value=\"" << detail.value << "\" />";
    }
}

std::size_t sizeOf(std::span<const CorvaneDetail> details) {
    constexpr std::size_t markup = 64;
    std::size_t size = 0;
    for (const CorvaneDetail& detail : details) {
        size += markup + detail.id.size() + detail.extra.size() +
                (detail.isText ? 0 : detail.value.size());
    }
    return size;
}

}  // namespace

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::optional<int> errnoValue,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    constexpr std::size_t envelope = 160;
    ReplyDocument document;
    document.reserve(envelope + action.size() + hint.size() + sizeOf(details));
    document << "<CorvaneMsg><Header id=\"info\" Type=\"RESULT\" Action=\"" << action
             << "\" Result=\"" << (ok ? "SUCCESS" : "FAILED") << "\"";
    if (errnoValue) {
        document << " errno=\"" << std::to_string(*errnoValue) << "\"";
    }
    if (!hint.empty()) {
        document << " hint=\"" << hint << "\"";
    }
    document << ">";
    for (const CorvaneDetail& detail : details) {
        appendDetail(document, detail);
    }
    document << "</Header></CorvaneMsg>";
    sendResponse(sock, document.pieces());
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::span<const CorvaneDetail> details, std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, details, hint);
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok, int errnoValue) {
    sendResult(sock, action, ok, errnoValue, {}, "");
}

void CorvaneServer::sendResult(int sock, const std::string& action, bool ok,
                               std::string_view hint) {
    sendResult(sock, action, ok, std::nullopt, {}, hint);
}

std::string directory2id(int kind) {
    const bool known = kind >= 0 && static_cast<std::size_t>(kind) < entryKinds.size();
    return std::string(entryKinds[known ? static_cast<std::size_t>(kind) : 1]);
}

int id2directory(const std::string& text) {
    for (std::size_t kind = 0; kind < entryKinds.size(); ++kind) {
        if (entryKinds[kind] == text) {
            return static_cast<int>(kind);
        }
    }
    return 0;
}

}  // namespace corvane
