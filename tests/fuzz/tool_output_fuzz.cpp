// What the window tool prints: taken whole from a pipe, and read as numbers between commas.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <string>
#include <vector>

#include "commands/wndutil.h"
#include "fuzz/fuzz_target.h"
#include "platform/file_desc.h"
#include "text/exception.h"
#include "text/strings.h"

namespace {

using namespace corvane;

// A pipe takes this much without a reader.
constexpr std::size_t pipeRoom = 61440;

std::string throughPipe(std::string_view text) {
    std::array<int, 2> ends{};
    fuzz::require(::pipe(ends.data()) == 0, "a pipe can be made");
    const FileDesc readEnd(ends[0]);
    FileDesc writeEnd(ends[1]);
    fuzz::require(::write(writeEnd, text.data(), text.size()) == static_cast<ssize_t>(text.size()),
                  "the pipe takes the text");
    writeEnd.close();
    return wndutil::readstring(readEnd);
}

// The number at the start of a field as far as its digits fit, -1 without one.
int numberOf(std::string_view field) {
    std::size_t at = 0;
    while (at < field.size() && (field[at] == ' ' || (field[at] >= '\t' && field[at] <= '\r'))) {
        ++at;
    }
    at += at < field.size() && field[at] == '+' ? 1 : 0;
    if (at > 0 && field[at - 1] == '+' && at < field.size() && field[at] == '-') {
        return -1;
    }
    long number = -1;
    const auto [end, error] =
        std::from_chars(field.data() + at, field.data() + field.size(), number);
    if (error == std::errc::result_out_of_range) {
        return static_cast<int>(field[at] == '-' ? INT64_MIN : INT64_MAX);
    }
    return error == std::errc() ? static_cast<int>(number) : -1;
}

void checkNumbers(const std::string& output) {
    const std::vector<std::string> fields = fuzz::split(output, ',');
    const char* cursor = output.c_str();
    for (std::size_t i = 1; i < fields.size(); ++i) {
        fuzz::require(wndutil::nextInt(cursor) == numberOf(fields[i]), "a field is a number or -1");
    }
    fuzz::require(cursor + fields.back().size() == output.c_str() + output.size(),
                  "the last field is left");
    try {
        wndutil::nextInt(cursor);
        fuzz::require(false, "there is no field behind the last comma");
    } catch (const Exception& e) {
        fuzz::require(e.message == format("error getting next param [%s]", cursor),
                      "the refusal shows what was left");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::asText(data, std::min(size, pipeRoom));
    fuzz::require(throughPipe(text) == text, "a pipe is read to its end");
    const std::string output(text.substr(0, text.find('\0')));
    checkNumbers(output);
    std::string argument = output;
    const std::array<char*, 3> argv{argument.data(), argument.data(), nullptr};
    fuzz::require(wndutil::makeCmd(output.c_str(), argv.data()) == output + " \"" + output + "\"",
                  "the log shows the command line with its arguments quoted");
    return 0;
}
