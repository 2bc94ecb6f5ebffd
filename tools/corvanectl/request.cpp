#include "corvanectl/request.h"

#include <cstddef>
#include <string_view>

#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view terminators("\0\x01", 2);

// The server takes a longer line for an empty one.
constexpr std::size_t longestParameter = 1023;

void checkCount(const CommandUsage& command, std::size_t given) {
    if (given < command.fewest() || given > command.most()) {
        throw Exception("wrong number of parameters, usage: " + usageLine(command));
    }
}

void checkParameter(std::string_view parameter, std::size_t number) {
    const auto place = static_cast<int>(number);
    if (parameter.find_first_of(terminators) != std::string_view::npos) {
        throw Exception(format("parameter %d holds the byte 0x01, which ends a request", place));
    }
    if (parameter.find('\n') != std::string_view::npos || endsWith(parameter, "\r")) {
        throw Exception(format("parameter %d holds a line end, which ends a parameter", place));
    }
    if (parameter.size() > longestParameter) {
        throw Exception(
            format("parameter %d is longer than %d bytes, the server would take it for "
                   "an empty one",
                   place, static_cast<int>(longestParameter)));
    }
}

void checkData(std::string_view data) {
    const std::size_t at = data.find_first_of(terminators);
    if (at != std::string_view::npos) {
        throw Exception(format("the data holds the byte 0x%02x at offset %zu, which ends a request",
                               static_cast<unsigned>(data[at]), at));
    }
}

}  // namespace

std::string makeRequest(const CommandUsage& command, const std::vector<std::string>& parameters,
                        const std::function<std::string()>& readData) {
    checkCount(command, parameters.size());
    std::string request(command.name);
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        checkParameter(parameters[i], i + 1);
        request += '\n' + parameters[i];
    }
    // An empty last line would not count as one; with its end it does.
    if (!parameters.empty()) {
        request += '\n';
    }
    if (command.takesData()) {
        const std::string bytes = readData();
        checkData(bytes);
        request += bytes;
    }
    request += '\0';
    return request;
}

}  // namespace corvane::ctl
