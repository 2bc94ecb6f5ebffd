#include "corvanectl/shell_words.h"

namespace corvane::ctl {
namespace {

constexpr std::string_view blanks = " \t";

class Splitter {
  public:
    explicit Splitter(std::string_view line) : line_(line) {}

    ShellWords split() {
        for (at_ = 0; at_ < line_.size(); ++at_) {
            takeCharacter(line_[at_]);
        }
        result_.open = quote_;
        result_.atNextWord = !inWord_;
        return std::move(result_);
    }

  private:
    void takeCharacter(char c) {
        if (quote_ == Quote::None && blanks.find(c) != std::string_view::npos) {
            inWord_ = false;
            return;
        }
        beginWord();
        if (c == '\'' && quote_ != Quote::Double) {
            quote_ = quote_ == Quote::Single ? Quote::None : Quote::Single;
        } else if (c == '"' && quote_ != Quote::Single) {
            quote_ = quote_ == Quote::Double ? Quote::None : Quote::Double;
        } else {
            result_.words.back() += c == '\\' && isEscape() ? line_[++at_] : c;
        }
    }

    void beginWord() {
        if (!inWord_) {
            inWord_ = true;
            result_.words.emplace_back();
            result_.lastBegin = at_;
        }
    }

    bool isEscape() const {
        if (quote_ == Quote::Single || at_ + 1 == line_.size()) {
            return false;
        }
        const char next = line_[at_ + 1];
        return quote_ == Quote::None || next == '"' || next == '\\';
    }

    std::string_view line_;
    std::size_t at_ = 0;
    ShellWords result_;
    Quote quote_ = Quote::None;
    bool inWord_ = false;
};

}  // namespace

ShellWords splitWords(std::string_view line) { return Splitter(line).split(); }

std::string quoted(std::string_view word) {
    std::string result;
    for (const char c : word) {
        if (blanks.find(c) != std::string_view::npos || c == '\'' || c == '"' || c == '\\') {
            result += '\\';
        }
        result += c;
    }
    return result;
}

}  // namespace corvane::ctl
