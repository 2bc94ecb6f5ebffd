// Files of this machine, read and written as a whole.
#pragma once

#include <string>
#include <string_view>

namespace corvane::ctl {

/// Throws Exception when it cannot be read to its end.
std::string readLocalFile(const std::string& path);

enum class Existing { Refused, Replaced };

/// Where a file called `name` goes when the user says `path`: into it, if that is a directory or
/// ends with "/". Throws Exception for what is there and must not be replaced: anything when
/// existing files are refused, else whatever is no regular file. A link to a file means the file.
std::string localTarget(const std::string& path, const std::string& name, Existing existing);

/// Writes beside the file and gives it the name only then: it is there as a whole or not at all. A
/// new one has the rights that the umask leaves, a replaced one keeps its own. Throws Exception,
/// also when existing files are refused and one has come meanwhile.
void writeLocalFile(const std::string& path, std::string_view contents, Existing existing);

}  // namespace corvane::ctl
