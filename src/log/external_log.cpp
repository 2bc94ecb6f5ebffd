#include "log/external_log.h"

#include <algorithm>
#include <cstddef>
#include <log4cpp/Category.hh>
#include <log4cpp/Priority.hh>
#include <set>
#include <stdexcept>

#include "text/exception.h"

namespace corvane {
namespace {

constexpr std::size_t mostCategories = 10'000;

log4cpp::Priority::Value priorityOf(const std::string& name) {
    if (name.empty()) {
        return log4cpp::Priority::INFO;
    }
    try {
        return log4cpp::Priority::getPriorityValue(name);
    } catch (const std::invalid_argument& e) {
        throw Exception(e.what());
    }
}

// A name makes one category for each of its dotted parts.
log4cpp::Category& categoryOf(const std::string& subCategory) {
    static std::set<std::string> known;
    static std::size_t made = 0;
    const std::string base = "ext.log";
    if (!subCategory.empty() && known.find(subCategory) == known.end()) {
        const auto parts =
            static_cast<std::size_t>(1 + std::count(subCategory.begin(), subCategory.end(), '.'));
        if (made + parts > mostCategories) {
            return log4cpp::Category::getInstance(base);
        }
        known.insert(subCategory);
        made += parts;
    }
    return log4cpp::Category::getInstance(subCategory.empty() ? base : base + "." + subCategory);
}

}  // namespace

void writeExternalLine(const std::string& subCategory, const std::string& priority,
                       const std::string& message) {
    const log4cpp::Priority::Value value = priorityOf(priority);
    categoryOf(subCategory).log(value, message);
}

}  // namespace corvane
