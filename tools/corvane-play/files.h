// The files of one directory, and nothing outside it: what a page may load.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_desc.h"

namespace corvane::play {

/// A regular file, open for reading.
struct ServedFile {
    FileDesc fd = FileDesc();  ///< -1 when there is no such file
    std::uint64_t size = 0;
};

class Files {
  public:
    /// Throws FileNotFoundException when `directory` cannot be opened. Links on the way to it are
    /// followed.
    explicit Files(const std::string& directory);

    /// Opens the file that the components lead to (see request_path.h), one directory after the
    /// other. No symbolic link is followed, wherever it leads, so that nothing can be put in the
    /// way while it is walked; nothing but a regular file is opened.
    ServedFile open(const std::vector<std::string>& components) const;

  private:
    FileDesc directory_;
};

/// The type of a file's contents, by the ending of its name in any letter case.
std::string_view mimeType(std::string_view name);

}  // namespace corvane::play
