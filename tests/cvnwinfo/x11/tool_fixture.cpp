#include "cvnwinfo/x11/tool_fixture.h"

#include <stdexcept>

namespace corvane::x11test {

Outcome runTool(const Environment& environment, const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {CVNWINFO_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return runProgram(command, environment);
}

PixelRectangle reportedRectangle(const X11Session& session, const std::string& title) {
    const Outcome outcome = runTool(session.environment(), {"-g", "-n", title});
    if (outcome.status != 0) {
        throw std::runtime_error(outcome.errors);
    }
    std::vector<int> numbers;
    std::size_t start = 0;
    for (std::size_t used = 0; start < outcome.output.size(); start += used + 1) {
        numbers.push_back(std::stoi(outcome.output.substr(start), &used));
    }
    if (numbers.size() != 4) {
        throw std::runtime_error("unexpected output: " + outcome.output);
    }
    return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

void PrintTo(X11Session::Manager manager, std::ostream* out) {
    *out << (manager == X11Session::Manager::openbox ? "UnderOpenbox" : "WithoutManager");
}

}  // namespace corvane::x11test
