#include "corvanectl/prompt.h"

#include <algorithm>
#include <array>
#include <iostream>
#include <string_view>
#include <vector>

#include "corvanectl/completion.h"
#include "corvanectl/exit_status.h"
#include "corvanectl/history_file.h"
#include "corvanectl/line_editor.h"
#include "corvanectl/run_command.h"
#include "corvanectl/shell_words.h"
#include "text/exception.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr std::array<std::string_view, 2> leave{"exit", "quit"};

Candidates complete(std::string_view line, const Endpoint& endpoint) {
    ShellWords split = splitWords(line);
    if (split.atNextWord) {
        split.words.emplace_back();
        split.lastBegin = line.size();
    }
    Candidates candidates{split.lastBegin, completions(split.words, endpoint)};
    for (const std::string_view word : leave) {
        if (split.words.size() == 1 && startsWith(word, split.words.front())) {
            candidates.texts.emplace_back(word);
        }
    }
    for (std::string& text : candidates.texts) {
        text = quoted(text);
    }
    return candidates;
}

int runLine(const std::vector<std::string>& words, const Invocation& options) {
    std::vector<const char*> arguments{"corvanectl"};
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    const int status = reportingFailures([&] {
        return runInvocation(
            parseInvocation(static_cast<int>(arguments.size()), arguments.data(), options));
    });
    std::cout.flush();
    return status;
}

class Prompt {
  public:
    explicit Prompt(const Invocation& options)
        : options_(options),
          editor_("corvanectl> ",
                  [&options](std::string_view line) { return complete(line, options.endpoint); }),
          history_(historyPath()) {
        for (const std::string& line : history_.load()) {
            editor_.remember(line);
        }
    }

    int run() {
        int status = succeeded;
        while (true) {
            const InputLine line = editor_.read();
            if (line.kind == InputLine::Kind::End) {
                std::cout << '\n';
                return status;
            }
            const ShellWords split = splitWords(line.text);
            if (line.kind == InputLine::Kind::Cancelled || split.words.empty()) {
                continue;
            }
            remember(line.text);
            if (std::find(leave.begin(), leave.end(), split.words.front()) != leave.end()) {
                return status;
            }
            status = split.open == Quote::None ? runLine(split.words, options_) : complain();
        }
    }

  private:
    // As with shells, a blank in front keeps a line out of the file.
    void remember(const std::string& line) {
        editor_.remember(line);
        if (!startsWith(line, " ")) {
            history_.append(line);
        }
    }

    static int complain() {
        return reportingFailures([]() -> int { throw Exception("a quote is not closed"); });
    }

    const Invocation& options_;
    LineEditor editor_;
    HistoryFile history_;
};

}  // namespace

int runPrompt(const Invocation& options) { return Prompt(options).run(); }

}  // namespace corvane::ctl
