// The records that replies are made of.
#pragma once

#include <string>
#include <utility>

namespace corvane {

/// One Detail element of a reply. No field is escaped when it is written.
struct CorvaneDetail {
    CorvaneDetail() = default;
    CorvaneDetail(std::string detailId, std::string detailValue, bool valueIsText)
        : id(std::move(detailId)), value(std::move(detailValue)), isText(valueIsText) {}

    std::string id;
    /// Written as the element's text when `isText`, else as the attribute Value.
    std::string value;
    std::string extra;
    /// Written only when not empty, like `date`.
    std::string size;
    std::string date;
    bool isText = false;
};

/// The kind of a directory entry by its number, from 0 to 4; 1, a directory, for any other number.
int knownKind(int kind);
/// The id of a kind: 0 "file", 1 "directory", 2 "share", 3 "server", 4 "domain"; "directory" for
/// any other number.
std::string directory2id(int kind);
/// The kind for an id, exactly spelled; 0 for any other text.
int id2directory(const std::string& text);

}  // namespace corvane
