// Standard output that remembers why it failed: a reader that has gone is no failure for people who
// type "corvanectl readText big | head".
#pragma once

#include <array>
#include <cstddef>
#include <streambuf>

namespace corvane::ctl {

/// Stands behind std::cout from its construction to its end.
class StandardOutput : public std::streambuf {
  public:
    StandardOutput();
    ~StandardOutput() override;
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;
    StandardOutput(StandardOutput&&) = delete;
    StandardOutput& operator=(StandardOutput&&) = delete;

    /// Whether writing has failed because nobody reads any more.
    bool hasNoReader() const;

  protected:
    int_type overflow(int_type c) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

  private:
    std::streambuf* before_;
    int error_ = 0;
    std::array<char, std::size_t{16} * 1024> room_{};
};

}  // namespace corvane::ctl
