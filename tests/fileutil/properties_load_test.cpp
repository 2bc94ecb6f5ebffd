// Property files that are large, or read while signals arrive.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <vector>

#include "fileutil/files_fixture.h"
#include "fileutil/properties.h"
#include "platform/waiting.h"
#include "support/held_signals.h"
#include "support/thrown.h"

namespace corvane {
namespace {

template <typename Work>
double processorSeconds(Work work) {
    const std::clock_t start = std::clock();
    work();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

class PropertiesLoad : public test::FilesTest {
  protected:
    std::string fileOfLines(int count) {
        std::string text;
        for (int i = 0; i < count; ++i) {
            text += "HKEY_LOCAL_MACHINE/Software/Product" + std::to_string(i) + ":name=value\n";
        }
        return scratch.file("f", text);
    }
    Properties store{false};
};

TEST_F(PropertiesLoad, OfManyLinesCostsLittleMoreThanReadingThem) {
    const std::string path = fileOfLines(600'000);
    std::vector<std::string> lines;
    const double reading = processorSeconds([&] {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            lines.push_back(line);
        }
    });
    EXPECT_LT(processorSeconds([&] { store.load(path); }), 30 * reading);
    EXPECT_EQ(lines.size(), 600'000U);
    EXPECT_EQ(store.getString("hkey_local_machine/SOFTWARE/product599999:NAME", ""), "value");
}

TEST_F(PropertiesLoad, DoesNotReadWhatFollowsALineThatIsTooLong) {
    const std::string path = scratch.file("f", "a=1\n");
    if (::truncate(path.c_str(), off_t{1} << 40) != 0) {
        GTEST_SKIP() << "no large files in " << scratch.path();
    }
    store.load(path);
    EXPECT_EQ(store.getInt("a", 0), 1);
}

TEST_F(PropertiesLoad, LetsSignalsInBetweenBlocks) {
    const std::string path = fileOfLines(1000);
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGCHLD), 0);
    store.load(path);
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(PropertiesLoad, EndsWhenTheProgramHasToStop) {
    const std::string path = fileOfLines(1000);
    EXPECT_EXIT(
        {
            requestStop();
            const std::string message = test::thrownBy([&] { store.load(path); });
            std::exit(message == test::withCode("read file '" + path + "' error", EINTR) ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace corvane
