// Files of sizes that no memory holds. Linux only: it has files without a disk that may be so
// large.
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "platform/file_desc.h"
#include "support/command_fixture.h"
#include "support/thrown.h"

namespace corvane {
namespace {

using test::commandLine;

class LargeFile : public test::CommandTest {};

TEST_F(LargeFile, IsTooLargeToReadWhenNoStringCanHoldIt) {
    const FileDesc file(::memfd_create("large", MFD_CLOEXEC));
    if (::ftruncate(file, std::numeric_limits<off_t>::max()) != 0) {
        GTEST_SKIP() << "this system has no file so large";
    }
    const std::string path = "/proc/self/fd/" + std::to_string(file);
    EXPECT_EQ(ask("readText", path), test::failure("readText"));
    EXPECT_EQ(
        log.lines()[2],
        commandLine("ERROR", "readText",
                    ": ERROR: '" +
                        test::withCode("file '" + path + "' is too large to read", ENOMEM) + "'"));
}

}  // namespace
}  // namespace corvane
