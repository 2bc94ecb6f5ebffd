// Runs a fuzz target over committed inputs, without libFuzzer: every file of the directories and
// files named on the command line, whole and cut short at every length.
#include <algorithm>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

#include "fuzz/fuzz_target.h"

namespace {

namespace fs = std::filesystem;

// Longer inputs are not cut at every length, but at this many evenly spaced ones.
constexpr std::size_t mostCuts = 128;

std::vector<fs::path> inputsOf(const fs::path& place) {
    std::vector<fs::path> files;
    if (!fs::is_directory(place)) {
        files.push_back(place);
        return files;
    }
    for (const fs::directory_entry& entry : fs::directory_iterator(place)) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

void run(const std::string& bytes) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

void runFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        throw std::runtime_error("cannot read " + path.string());
    }
    const std::string bytes{std::istreambuf_iterator<char>(in), {}};
    const std::size_t step = std::max<std::size_t>(1, bytes.size() / mostCuts);
    for (std::size_t length = 0; length < bytes.size(); length += step) {
        run(bytes.substr(0, length));
    }
    run(bytes);
}

int runAll(const std::vector<std::string>& places) {
    std::size_t count = 0;
    for (const std::string& place : places) {
        for (const fs::path& path : inputsOf(place)) {
            std::cerr << path.string() << std::endl;  // names the culprit if the next call dies
            runFile(path);
            ++count;
        }
    }
    std::cout << count << " inputs\n";
    return count > 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return runAll({argv + 1, argv + argc});
    } catch (const std::exception& e) {
        std::cerr << e.what() << std::endl;
        return 1;
    }
}
