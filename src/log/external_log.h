// Lines that clients write into the program's log, under the category "ext.log".
#pragma once

#include <string>

namespace corvane {

/// Logs `message`, as it is, under "ext.log" or, with a sub-category, "ext.log." + that. `priority`
/// is a log4cpp name or number; empty for INFO. Throws Exception for an unknown priority. The
/// logging library keeps every category for ever, so that after 10,000 of them lines under further
/// names go to "ext.log" itself.
void writeExternalLine(const std::string& subCategory, const std::string& priority,
                       const std::string& message);

}  // namespace corvane
