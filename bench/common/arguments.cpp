#include "bench/common/arguments.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace corvane::bench {

Arguments::Arguments(int argc, char** argv) {
    if (argc < 2) {
        throw std::invalid_argument("a mode is missing");
    }
    mode_ = argv[1];
    int index = 2;
    for (; index < argc && std::string(argv[index]) != "--"; index += 2) {
        const std::string option = argv[index];
        if (option.rfind("--", 0) != 0 || index + 1 == argc) {
            throw std::invalid_argument("not an option with a value: " + option);
        }
        values_[option.substr(2)] = argv[index + 1];
    }
    if (index < argc) {
        command_.assign(argv + index + 1, argv + argc);
    }
}

std::string Arguments::text(const std::string& name, const std::string& fallback) const {
    const auto found = values_.find(name);
    return found == values_.end() ? fallback : found->second;
}

int Arguments::number(const std::string& name, int fallback) const {
    const auto found = values_.find(name);
    return found == values_.end() ? fallback : std::stoi(found->second);
}

std::string readWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace corvane::bench
