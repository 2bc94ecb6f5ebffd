#include "fuzz/scratch.h"

#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "fuzz/fuzz_target.h"

namespace corvane::fuzz {
namespace {

class Scratch {
  public:
    Scratch() : path_((std::filesystem::temp_directory_path() / "corvane-fuzz-XXXXXX").string()) {
        require(::mkdtemp(path_.data()) != nullptr, "a scratch directory can be made");
    }
    ~Scratch() {
        std::error_code ignored;
        std::filesystem::current_path("/", ignored);
        std::filesystem::remove_all(path_, ignored);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;
    Scratch(Scratch&&) = delete;
    Scratch& operator=(Scratch&&) = delete;

    const std::string& path() const { return path_; }

  private:
    std::string path_;
};

}  // namespace

const std::string& scratchDirectory() {
    static const Scratch scratch;
    return scratch.path();
}

std::string scratchFile(std::string_view bytes) {
    std::string path = scratchDirectory() + "/input";
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << bytes;
    out.close();
    require(!out.fail(), "the scratch file can be written");
    return path;
}

}  // namespace corvane::fuzz
