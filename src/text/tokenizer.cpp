#include "text/tokenizer.h"

#include <utility>

namespace corvane {

StringTokenizer::StringTokenizer(std::string text, std::string delimiters)
    : text_(std::move(text)), delimiters_(std::move(delimiters)) {}

void StringTokenizer::set(std::string text, std::string delimiters) {
    text_ = std::move(text);
    delimiters_ = std::move(delimiters);
    position_ = 0;
}

bool StringTokenizer::hasNextToken() const {
    return text_.find_first_not_of(delimiters_, position_) != std::string::npos;
}

std::string StringTokenizer::nextToken() {
    const std::size_t start = text_.find_first_not_of(delimiters_, position_);
    if (start == std::string::npos) {
        return {};
    }
    position_ = text_.find_first_of(delimiters_, start);
    return text_.substr(start, position_ - start);
}

}  // namespace corvane
