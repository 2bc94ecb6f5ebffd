#include "commands/file_details.h"

#include <algorithm>
#include <cstddef>
#include <string>
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

// What sorting needs of an entry, computed once: comparing the keys is comparing the details.
struct SortKey {
    int kind;
    std::string name;
    std::size_t index;

    bool operator<(const SortKey& other) const {
        return kind != other.kind ? kind > other.kind : name < other.name;
    }
};

}  // namespace

int cmpFileInfo2(const CorvaneDetail& a, const CorvaneDetail& b) {
    const int kinds = id2directory(b.id) - id2directory(a.id);
    return kinds != 0 ? kinds : lex_stricmp(a.value, b.value);
}

std::vector<CorvaneDetail> files2details(std::vector<FileInfo> files) {
    std::vector<SortKey> order;
    order.reserve(files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
        const std::string& name = files[i].name;
        if (name != DIR_THIS && name != DIR_PARENT) {
            order.push_back(
                {id2directory(directory2id(files[i].type)), lexKey(name, lex_icoll), i});
        }
    }
    std::stable_sort(order.begin(), order.end());

    std::vector<CorvaneDetail> details;
    details.reserve(order.size());
    for (const SortKey& key : order) {
        CorvaneDetail& detail = details.emplace_back(describe(files[key.index]));
        if (detail.id == directory2id(1)) {
            detail.value = correctDirectoryPath(std::move(detail.value));
        }
    }
    return details;
}

}  // namespace corvane
