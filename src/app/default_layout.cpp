#include "app/default_layout.h"

#include <array>
#include <cstddef>
#include <log4cpp/Priority.hh>

namespace corvane {
namespace {

std::string localTime(std::time_t second) {
    std::tm parts{};
    ::localtime_r(&second, &parts);
    std::array<char, 64> text{};
    return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts)};
}

char digit(int number) { return static_cast<char>('0' + number % 10); }

}  // namespace

std::string DefaultLayout::format(const log4cpp::LoggingEvent& event) {
    const std::time_t second = event.timeStamp.getSeconds();
    if (second != second_) {
        second_ = second;
        secondText_ = localTime(second);
    }
    const int milliseconds = event.timeStamp.getMilliSeconds();
    const std::string& priority = log4cpp::Priority::getPriorityName(event.priority);
    constexpr std::size_t punctuation = 16;
    std::string line;
    line.reserve(secondText_.size() + priority.size() + event.categoryName.size() +
                 event.message.size() + punctuation);
    line += secondText_;
    line += {',', digit(milliseconds / 100), digit(milliseconds / 10), digit(milliseconds)};
    line.append(" [").append(priority).append(",").append(event.categoryName).append("] ");
    line.append(event.message).append("\n");
    return line;
}

}  // namespace corvane
