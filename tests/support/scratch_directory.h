// A directory of its own for each test that needs files, below TMPDIR (or /tmp), removed with all
// that is in it when the test is over.
#pragma once

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace corvane::test {

/// The bytes of a file; empty when it cannot be read, as the files in /proc of a process that ends
/// meanwhile (stream buffers throw then).
inline std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    try {
        return {std::istreambuf_iterator<char>(file), {}};
    } catch (const std::ios_base::failure&) {
        return "";
    }
}

/// Creates a file, or replaces one, with these bytes. Throws std::runtime_error.
inline void writeFile(const std::string& path, std::string_view bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
}

class ScratchDirectory {
  public:
    ScratchDirectory() : path_(std::filesystem::temp_directory_path() / "corvane-XXXXXX") {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("cannot create " + path_);
        }
        path_ += '/';
    }
    ~ScratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;
    ScratchDirectory(ScratchDirectory&&) = delete;
    ScratchDirectory& operator=(ScratchDirectory&&) = delete;

    /// Ends with "/".
    const std::string& path() const { return path_; }

    /// The path of something in it.
    std::string operator/(std::string_view name) const { return path_ + std::string(name); }

    /// Each returns the path of what it creates. A name may have directories in it; those that are
    /// missing are created too.
    std::string file(std::string_view name, std::string_view bytes = "") const {
        std::string path = inDirectory(name);
        writeFile(path, bytes);
        return path;
    }
    std::string directory(std::string_view name) const {
        std::string path = *this / name;
        std::filesystem::create_directories(path);
        return path;
    }
    /// An executable file, such as a shell script.
    std::string program(std::string_view name, std::string_view bytes) const {
        std::string path = file(name, bytes);
        if (::chmod(path.c_str(), 0755) != 0) {
            throw std::runtime_error("cannot make executable " + path);
        }
        return path;
    }

  private:
    std::string inDirectory(std::string_view name) const {
        std::string path = *this / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        return path;
    }

    std::string path_;
};

}  // namespace corvane::test
