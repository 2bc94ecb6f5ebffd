#include "corvanectl/line_editor.h"

#include <algorithm>

namespace corvane::ctl {

std::string commonBegin(const std::vector<std::string>& texts) {
    std::string common = texts.front();
    for (const std::string& text : texts) {
        const auto differing =
            std::mismatch(common.begin(), common.end(), text.begin(), text.end()).first;
        common.erase(differing, common.end());
    }
    return common;
}

}  // namespace corvane::ctl
