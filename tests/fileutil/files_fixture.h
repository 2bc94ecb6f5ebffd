// What the tests of files share: a directory of their own, and copies of trees that may fail.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "fileutil/file_operations.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"

namespace corvane::test {

class FilesTest : public testing::Test {
  protected:
    ScratchDirectory scratch;
};

class TreeCopyTest : public FilesTest {
  protected:
    /// What copying a directory throws.
    static std::string copying(const std::string& src, const std::string& dst,
                               const CopyOptions* options = nullptr) {
        return thrownBy<IOException>([&] { copyDirectory(src, dst, options); });
    }
};

}  // namespace corvane::test
