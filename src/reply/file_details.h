// Turning directory entries into the details of a reply.
#pragma once

#include <vector>

#include "fileutil/file_info.h"
#include "reply/corvane_detail.h"

namespace corvane {

/// One detail for each entry but "." and "..", directories first (with a trailing "/"), each kind
/// in the order of the names without regard to letter case. Takes the entries to move the names.
/// Signals are let in while there are many; IOException when the program has to stop.
std::vector<CorvaneDetail> files2details(std::vector<FileInfo> files);

/// A provided interface that the program itself does not call: files2details() sorts by keys.
/// The order of two details: the higher kind first, then by name. Negative, 0 or positive.
int cmpFileInfo2(const CorvaneDetail& a, const CorvaneDetail& b);

}  // namespace corvane
