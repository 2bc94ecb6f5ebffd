#include <histedit.h>
#include <stdlib.h>

#include <algorithm>
#include <clocale>
#include <cstdio>
#include <iostream>
#include <utility>

#include "corvanectl/display.h"
#include "corvanectl/line_editor.h"
#include "corvanectl/listing.h"
#include "corvanectl/terminal.h"
#include "text/strings.h"

namespace corvane::ctl {
namespace {

constexpr int linesKept = 1000;

struct EndEdit {
    void operator()(EditLine* edit) const { ::el_end(edit); }
};
struct EndHistory {
    void operator()(History* history) const { ::history_end(history); }
};

}  // namespace

struct LineEditor::State {
    std::string prompt;
    Completer completer;
    std::unique_ptr<History, EndHistory> history;
    std::unique_ptr<EditLine, EndEdit> edit;
    bool isCancelled = false;

    static State& of(EditLine* edit) {
        void* state = nullptr;
        ::el_get(edit, EL_CLIENTDATA, &state);
        return *static_cast<State*>(state);
    }

    static char* promptOf(EditLine* edit) { return of(edit).prompt.data(); }

    static unsigned char cancel(EditLine* edit, int /*key*/) {
        of(edit).isCancelled = true;
        return CC_NEWLINE;
    }

    static unsigned char complete(EditLine* edit, int /*key*/) {
        const LineInfo* const line = ::el_line(edit);
        const std::string text(line->buffer, line->cursor);
        const Candidates candidates = of(edit).completer(text);
        return candidates.texts.empty() ? CC_ERROR : offer(edit, text, candidates);
    }

  private:
    static unsigned char offer(EditLine* edit, const std::string& text,
                               const Candidates& candidates) {
        const std::string typed = text.substr(candidates.begin);
        std::string common = commonBegin(candidates.texts);
        const bool isOnly = candidates.texts.size() == 1;
        if (!isOnly && common.size() <= typed.size()) {
            show(candidates.texts);
            return CC_REDISPLAY;
        }
        common += isOnly && !endsWith(common, "/") ? " " : "";
        ::el_deletestr(edit, charactersIn(typed));
        return ::el_insertstr(edit, common.c_str()) == 0 ? CC_REFRESH : CC_ERROR;
    }

    // As libedit counts them.
    static int charactersIn(const std::string& text) {
        const auto isFurther = [](char c) {
            return (static_cast<unsigned char>(c) & 0xc0) == 0x80;
        };
        const auto all = std::count_if(text.begin(), text.end(),
                                       [&](char c) { return MB_CUR_MAX == 1 || !isFurther(c); });
        return static_cast<int>(all);
    }

    static void show(const std::vector<std::string>& texts) {
        std::vector<ReplyDetail> entries;
        entries.reserve(texts.size());
        for (const std::string& text : texts) {
            entries.push_back({"file", text, "", "", "", false});
        }
        std::cout << '\n';
        printColumns(entries, terminalWidth(1), std::cout);
        std::cout << std::flush;
    }
};

LineEditor::LineEditor(std::string prompt, Completer completer)
    : state_(std::make_unique<State>()) {
    static_cast<void>(std::setlocale(LC_CTYPE, ""));
    state_->prompt = std::move(prompt);
    state_->completer = std::move(completer);
    state_->history.reset(::history_init());
    state_->edit.reset(::el_init("corvanectl", stdin, stdout, stderr));
    HistEvent event{};
    ::history(state_->history.get(), &event, H_SETSIZE, linesKept);
    ::history(state_->history.get(), &event, H_SETUNIQUE, 1);
    EditLine* const edit = state_->edit.get();
    ::el_set(edit, EL_CLIENTDATA, state_.get());
    ::el_set(edit, EL_PROMPT, &State::promptOf);
    ::el_set(edit, EL_HIST, &::history, state_->history.get());
    ::el_set(edit, EL_EDITOR, "emacs");
    ::el_set(edit, EL_ADDFN, "corvanectl-complete", "Complete the word", &State::complete);
    ::el_set(edit, EL_ADDFN, "corvanectl-cancel", "Cancel the line", &State::cancel);
    ::el_set(edit, EL_BIND, "^I", "corvanectl-complete", nullptr);
    ::el_source(edit, nullptr);
    // The key cancels the line instead of ending the program.
    ::el_set(edit, EL_SETTY, "-d", "-isig", nullptr);
    ::el_set(edit, EL_BIND, "^C", "corvanectl-cancel", nullptr);
}

LineEditor::~LineEditor() = default;

InputLine LineEditor::read() {
    state_->isCancelled = false;
    int length = 0;
    // Before the prompt is there: libedit would do it behind that, and lose keys in between.
    ::el_set(state_->edit.get(), EL_PREP_TERM, 1);
    const char* const text = ::el_gets(state_->edit.get(), &length);
    if (text == nullptr || length <= 0) {
        return {InputLine::Kind::End, ""};
    }
    if (state_->isCancelled) {
        std::cout << "^C\n" << std::flush;
        return {InputLine::Kind::Cancelled, ""};
    }
    std::string line(text, static_cast<std::size_t>(length));
    line.erase(line.find_last_not_of('\n') + 1);
    return {InputLine::Kind::Line, std::move(line)};
}

void LineEditor::remember(const std::string& line) {
    HistEvent event{};
    ::history(state_->history.get(), &event, H_ENTER, line.c_str());
}

}  // namespace corvane::ctl
