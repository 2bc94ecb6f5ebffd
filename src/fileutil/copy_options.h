// The filter of a directory copy: whether to descend, and which file extensions to take or leave.
#pragma once

#include <string>
#include <vector>

namespace corvane {

class CopyOptions {
  public:
    /// Trims `ext` and adds it to the extensions to include, or to those to exclude.
    void addExt(bool include, const std::string& ext);
    /// Adds each piece of a comma-separated list that is not empty.
    void addExts(bool include, const std::string& list);
    /// Whether a file of this name is copied. Extensions compare exactly, letter case included; a
    /// file without one has the empty extension.
    bool isAllowed(const std::string& path) const;

    bool recursive = true;
    /// When not empty, only files with one of these extensions are copied.
    std::vector<std::string> includeExts;
    std::vector<std::string> excludeExts;
};

}  // namespace corvane
