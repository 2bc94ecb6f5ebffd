#include "corvanectl/local/log_view.h"

#include <algorithm>

#include "cmdl/command_line.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

cmdl::Options declaredOptions() {
    cmdl::Options options;
    options.addOption({"f", "follow", "", true, "", true});
    options.addOption({"", "level", "", false, "", true});
    options.addOption({"", "client", "", false, "", true});
    options.addOption({"", "command", "", false, "", true});
    return options;
}

}  // namespace

std::optional<LogView> LogView::parse(const std::vector<std::string>& parameters) {
    constexpr std::size_t serversParameters = 3;
    std::vector<const char*> arguments{"log"};
    std::transform(parameters.begin(), parameters.end(), std::back_inserter(arguments),
                   [](const std::string& each) { return each.c_str(); });
    cmdl::CommandLine line;
    try {
        line.parse(declaredOptions(), static_cast<int>(arguments.size()), arguments.data());
    } catch (const Exception&) {
        if (parameters.size() == serversParameters || !startsWith(parameters.front(), "-")) {
            return std::nullopt;
        }
        throw;
    }
    if (line.getArgCount() != 0) {
        return std::nullopt;
    }
    LogView view;
    view.follow = line.hasOption("f");
    view.client = line.getOptionValue("client", "");
    view.command = line.getOptionValue("command", "");
    const std::string level = line.getOptionValue("level", "DEBUG");
    view.level = levelNamed(level);
    if (view.level == Level::Unknown) {
        throw Exception("'" + level +
                        "' is no level: FATAL, ALERT, CRIT, ERROR, WARN, NOTICE, INFO or DEBUG");
    }
    return view;
}

bool LogFilter::shows(std::string_view line) {
    const LogLine parsed = parseLogLine(line);
    const bool goesOn =
        parsed.category.empty() && (sawDefaultLayout_ || parsed.level == Level::Unknown);
    sawDefaultLayout_ = sawDefaultLayout_ || !parsed.category.empty();
    if (!goesOn) {
        level_ = parsed.level;
        isShown_ = parsed.level <= view_.level &&
                   (view_.client.empty() || namesClient(line, view_.client)) &&
                   (view_.command.empty() || namesCommand(parsed, view_.command));
    }
    return isShown_;
}

}  // namespace corvane::ctl
