#include "reply/file_details.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "fileutil/paths.h"
#include "platform/waiting.h"
#include "text/exception.h"
#include "text/lex.h"

namespace corvane {
namespace {

// Lets signals in now and then while `entries` are counted up.
void stopWhenAsked(std::size_t entries) {
    constexpr std::size_t block = 1024;
    if (entries % block == block - 1 && interrupted()) {
        throw IOException("listing was stopped", EINTR);
    }
}

CorvaneDetail describe(FileInfo& file) {
    CorvaneDetail detail(directory2id(file.type), std::move(file.name), false);
    if (knownKind(file.type) == 1) {
        detail.value = correctDirectoryPath(std::move(detail.value));
    }
    if (file.attributes.find(FileInfo::DIRECTORY) == std::string::npos) {
        detail.size = std::to_string(file.size);
    }
    detail.extra = std::move(file.attributes);
    detail.date = std::move(file.date);
    return detail;
}

// Where an entry is found, and the beginning of its sort key.
struct Place {
    std::uint64_t beginning;
    std::size_t start;
    std::uint32_t length;
    std::uint32_t index;
};

// The sort keys of all entries in one string: comparing the bytes of two keys is comparing the
// details. Names in a directory often begin alike; what all keys share is left out of the
// beginnings, which then decide most comparisons without a look at the keys.
class Order {
  public:
    explicit Order(const std::vector<FileInfo>& files) {
        places_.reserve(files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            stopWhenAsked(i);
            if (files[i].name != DIR_THIS && files[i].name != DIR_PARENT) {
                add(files[i], static_cast<std::uint32_t>(i));
            }
        }
        for (Place& place : places_) {
            place.beginning = beginningOf(place);
        }
        std::sort(places_.begin(), places_.end(),
                  [this](const Place& a, const Place& b) { return isLess(a, b); });
    }

    const std::vector<Place>& places() const { return places_; }

  private:
    static constexpr int highestKind = 4;

    void add(const FileInfo& file, std::uint32_t index) {
        static const SortKeyEncoder keys(lex_icoll);
        const std::size_t start = bytes_.size();
        bytes_.push_back(static_cast<char>(highestKind - knownKind(file.type)));
        keys.append(file.name, bytes_);
        places_.push_back({0, start, static_cast<std::uint32_t>(bytes_.size() - start), index});
        const std::string_view first = keyOf(places_.front()).substr(1);
        const std::string_view added = keyOf(places_.back()).substr(1);
        shared_ = std::min({shared_, first.size(), added.size()});
        shared_ = static_cast<std::size_t>(
            std::mismatch(first.begin(), first.begin() + static_cast<std::ptrdiff_t>(shared_),
                          added.begin())
                .first -
            first.begin());
    }

    std::string_view keyOf(const Place& place) const {
        return std::string_view(bytes_).substr(place.start, place.length);
    }

    // The kind and the first bytes that are not shared, so that numbers compare like keys.
    std::uint64_t beginningOf(const Place& place) const {
        const std::string_view key = keyOf(place);
        std::uint64_t number = static_cast<unsigned char>(key.front());
        for (std::size_t i = shared_ + 1; i < shared_ + sizeof number; ++i) {
            number = number << 8U | (i < key.size() ? static_cast<unsigned char>(key[i]) : 0U);
        }
        return number;
    }

    bool isLess(const Place& a, const Place& b) const {
        if (a.beginning != b.beginning) {
            return a.beginning < b.beginning;
        }
        const int order = keyOf(a).compare(keyOf(b));
        return order != 0 ? order < 0 : a.index < b.index;
    }

    std::string bytes_;
    std::vector<Place> places_;
    /// How many bytes all keys have in common, the kind left out.
    std::size_t shared_ = std::string::npos;
};

}  // namespace

int cmpFileInfo2(const CorvaneDetail& a, const CorvaneDetail& b) {
    const int kinds = id2directory(b.id) - id2directory(a.id);
    return kinds != 0 ? kinds : lex_stricmp(a.value, b.value);
}

std::vector<CorvaneDetail> files2details(std::vector<FileInfo> files) {
    const Order order(files);
    std::vector<CorvaneDetail> details;
    details.reserve(order.places().size());
    for (const Place& place : order.places()) {
        stopWhenAsked(details.size());
        details.push_back(describe(files[place.index]));
    }
    return details;
}

}  // namespace corvane
