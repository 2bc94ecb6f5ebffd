#include "corvanectl/remote_file.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <string_view>

#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

// Larger offsets count as this one.
constexpr std::size_t lastOffset = INT_MAX;
constexpr std::size_t bytesAtOnce = 1024;

class Reader {
  public:
    Reader(Session& session, const std::string& file, const std::string& text)
        : session_(session), file_(file), text_(text) {
        if (text.size() > lastOffset) {
            throw tooLarge();
        }
    }

    // Nothing stands behind the text, and its last byte where the text says.
    bool isWhole() {
        if (hasByteAt(text_.size())) {
            return false;
        }
        require(text_.empty() ||
                session_.readBytes(file_, text_.size() - 1, 1) == text_.substr(text_.size() - 1));
        return true;
    }

    // There is a byte behind the offset of the text's size.
    std::size_t findSize() {
        std::size_t present = text_.size();
        std::size_t missing = present + 1;
        for (std::size_t step = 1; hasByteAt(missing); step *= 2) {
            if (missing == lastOffset) {
                throw tooLarge();
            }
            present = missing;
            missing = std::min(missing + step, lastOffset);
        }
        while (missing - present > 1) {
            const std::size_t middle = present + (missing - present) / 2;
            (hasByteAt(middle) ? present : missing) = middle;
        }
        return missing;
    }

    // As soon as no byte, or nothing but such bytes, can be left out of the rest, that is known.
    std::string readAll(std::size_t size, const ByteProgress& progress) {
        std::string bytes;
        bytes.reserve(size);
        std::string_view text = text_;
        while (size - bytes.size() != text.size() && !text.empty()) {
            require(text.size() < size - bytes.size());
            const std::size_t count = std::min(bytesAtOnce, size - bytes.size());
            const std::string read = session_.readBytes(file_, bytes.size(), count);
            require(read.size() == count);
            skipRead(read, text);
            bytes += read;
            progress(bytes.size(), size);
        }
        bytes += text.empty() ? std::string(size - bytes.size(), '\0') : std::string(text);
        return bytes;
    }

    std::size_t requests() const { return requests_; }

  private:
    bool hasByteAt(std::size_t offset) {
        ++requests_;
        return !session_.readBytes(file_, offset, 1).empty();
    }

    void skipRead(std::string_view read, std::string_view& text) const {
        for (const char byte : read) {
            if (byte != '\0') {
                require(startsWith(text, {&byte, 1}));
                text.remove_prefix(1);
            }
        }
    }

    void require(bool isUnchanged) const {
        if (!isUnchanged) {
            throw Exception("'" + file_ + "' changes while it is read");
        }
    }

    Exception tooLarge() const {
        return Exception("'" + file_ + "' is larger than 2 GiB, where readByte does not reach");
    }

    Session& session_;
    const std::string& file_;
    const std::string& text_;
    std::size_t requests_ = 0;
};

}  // namespace

std::string completeText(Session& session, const std::string& file, std::string text,
                         LeftOut leftOut, const ByteProgress& progress) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point begin = Clock::now();
    Reader reader(session, file, text);
    if (reader.isWhole()) {
        return text;
    }
    const std::size_t size = reader.findSize();
    if (leftOut == LeftOut::ReadOneByOne) {
        return reader.readAll(size, progress);
    }
    const std::chrono::duration<double> each =
        (Clock::now() - begin) / static_cast<double>(reader.requests());
    throw Exception(format(
        "'%s' has %zu bytes 0x00, which readText leaves out; 'get --bytes' reads "
        "it with up to %zu requests, in about %.0f s",
        file.c_str(), size - text.size(), size, each.count() * static_cast<double>(size) + 0.5));
}

}  // namespace corvane::ctl
