#include "commands/file_details.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "fileutil/paths.h"
#include "text/lex.h"

namespace corvane {
namespace {

CorvaneDetail describe(FileInfo& file) {
    CorvaneDetail detail(directory2id(file.type), std::move(file.name), false);
    if (file.attributes.find(FileInfo::DIRECTORY) == std::string::npos) {
        detail.size = std::to_string(file.size);
    }
    detail.extra = std::move(file.attributes);
    detail.date = std::move(file.date);
    return detail;
}

// Entries and their sort keys: comparing the bytes of two keys is comparing the details. All keys
// lie in one string, so that sorting moves nothing but positions.
class Order {
  public:
    explicit Order(const std::vector<FileInfo>& files) {
        places_.reserve(files.size());
        for (std::size_t i = 0; i < files.size(); ++i) {
            const FileInfo& file = files[i];
            if (file.name != DIR_THIS && file.name != DIR_PARENT) {
                const std::size_t start = bytes_.size();
                bytes_ += static_cast<char>(-id2directory(directory2id(file.type)) + highestKind);
                keys_.append(file.name, bytes_);
                places_.push_back({start, bytes_.size() - start, i});
            }
        }
        std::stable_sort(places_.begin(), places_.end(),
                         [this](const Place& a, const Place& b) { return keyOf(a) < keyOf(b); });
    }

    struct Place {
        std::size_t start;
        std::size_t length;
        std::size_t index;
    };

    const std::vector<Place>& places() const { return places_; }

  private:
    static constexpr int highestKind = 4;

    std::string_view keyOf(const Place& place) const {
        return std::string_view(bytes_).substr(place.start, place.length);
    }

    LexKeys keys_{lex_icoll};
    std::string bytes_;
    std::vector<Place> places_;
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
    for (const Order::Place& place : order.places()) {
        CorvaneDetail& detail = details.emplace_back(describe(files[place.index]));
        if (detail.id == directory2id(1)) {
            detail.value = correctDirectoryPath(std::move(detail.value));
        }
    }
    return details;
}

}  // namespace corvane
