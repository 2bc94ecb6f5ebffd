#include "log/default_layout.h"

#include <array>
#include <log4cpp/Priority.hh>
#include <string_view>

#include "text/strings.h"

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
    const std::array<char, 4> fraction{',', digit(milliseconds / 100), digit(milliseconds / 10),
                                       digit(milliseconds)};
    return concatenate(secondText_, std::string_view(fraction.data(), fraction.size()), " [",
                       log4cpp::Priority::getPriorityName(event.priority), ",", event.categoryName,
                       "] ", event.message, "\n");
}

}  // namespace corvane
