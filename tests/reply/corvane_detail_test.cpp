#include "reply/corvane_detail.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstddef>
#include <string>

namespace corvane {
namespace {

TEST(EntryKinds, HaveOneTextEach) {
    const std::array<std::string, 5> texts{"file", "directory", "share", "server", "domain"};
    for (int kind = 0; kind < 5; ++kind) {
        EXPECT_EQ(directory2id(kind), texts[static_cast<std::size_t>(kind)]);
        EXPECT_EQ(id2directory(texts[static_cast<std::size_t>(kind)]), kind);
    }
}

TEST(EntryKinds, HaveADefaultInBothDirections) {
    for (const int kind : {-1, 5, 7, INT_MIN, INT_MAX}) {
        EXPECT_EQ(directory2id(kind), "directory");
    }
    for (const char* text : {"Share", "", "files", "DIRECTORY", " file"}) {
        EXPECT_EQ(id2directory(text), 0) << text;
    }
}

}  // namespace
}  // namespace corvane
