// Names of the server's files, as it understands them: "/" and "\" are the same.
#pragma once

#include <string>
#include <string_view>

namespace corvane::ctl {

/// With "/" in place of "\".
std::string withSlashes(std::string path);

/// Up to the last "/", which is included; empty when there is none.
std::string directoryPart(std::string_view path);
/// Behind the last "/".
std::string namePart(std::string_view path);

/// `directory` + "/" + `name`, with one "/" between them.
std::string inDirectory(const std::string& directory, std::string_view name);

/// The path from the root; a relative one begins at `current`.
std::string fromRoot(const std::string& path, const std::string& current);

/// A path from the root without empty parts, "." and "..". Links are not known: one in front of
/// ".." is left out like any directory.
std::string normalised(const std::string& path);

/// Whether they differ in upper and lower case of English letters at most.
bool equalButForCase(std::string_view a, std::string_view b);

/// Throws Exception for a path that is empty or has characters that the server drops from names,
/// so that another file would be meant.
void requireExactName(const std::string& path);

}  // namespace corvane::ctl
