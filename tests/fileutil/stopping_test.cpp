// Long work on files lets signals in, and ends when the program has to stop.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <utility>

#include "fileutil/copy_file.h"
#include "fileutil/file_info.h"
#include "fileutil/file_operations.h"
#include "fileutil/files_fixture.h"
#include "platform/waiting.h"
#include "support/held_signals.h"
#include "support/signal_action.h"
#include "support/thrown.h"
#include "support/tree.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;
using test::thrownBy;
using test::withCode;

constexpr std::size_t severalBlocks = 40'000'000;
constexpr std::size_t lessThanABlockOfTheKernel = 100'000;

class Stopping : public test::FilesTest {
  protected:
    Stopping() {
        scratch.file("src/a", "text");
        scratch.directory("sub/below");
        scratch.directory("dst");
    }

    std::string manyFiles() {
        for (int i = 0; i < 1100; ++i) {
            scratch.file("many/" + std::to_string(i));
        }
        return scratch / "many";
    }

    // Does the work in a process of its own.
    static void expectThrown(const std::function<void()>& work, const std::string& message) {
        const auto end = [&] {
            const std::string thrown = thrownBy<IOException>(work);
            std::fputs(thrown.c_str(), stderr);
            std::exit(thrown == message ? 0 : 1);
        };
        EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
    }

    // The message of what is done while the program has to stop.
    static void expectEnd(const std::function<void()>& work, const std::string& message) {
        expectThrown(
            [&] {
                requestStop();
                work();
            },
            withCode(message, EINTR));
    }

    // Copies to a new file; the program has to stop once that is open.
    void copyAndStop(const std::string& src, Durability durability) const {
        const FilePlace from = placeOf(src);
        const FilePlace to = placeOf(scratch / "new");
        const OpenedFile source = openSource(from);
        OpenedFile target = openTarget(to, Target::RegularFile);
        requestStop();
        copyContents(source, std::move(target), from, to, durability);
    }
};

TEST_F(Stopping, EndsACopyAndRemovesThePartialTarget) {
    const std::string src = scratch.file("large", "text");
    fs::resize_file(src, severalBlocks);
    for (const Durability durability : {Durability::Handed, Durability::OnDisk}) {
        expectThrown([&] { copyAndStop(src, durability); },
                     withCode("write dst file '" + (scratch / "new") + "' error", EINTR));
        EXPECT_FALSE(fs::exists(scratch / "new"));
    }
    EXPECT_EQ(fs::file_size(src), severalBlocks);
}

TEST_F(Stopping, LeavesACopyThatNeedsNoFurtherBlock) {
    for (const std::size_t size : {std::size_t{4}, lessThanABlockOfTheKernel}) {
        const std::string text(size, 'x');
        const std::string src = scratch.file("src/b", text);
        for (const Durability durability : {Durability::Handed, Durability::OnDisk}) {
            expectThrown([&] { copyAndStop(src, durability); }, "nothing was thrown");
            EXPECT_TRUE(fs::exists(scratch / "new") && test::readFile(scratch / "new") == text);
            fs::remove(scratch / "new");
        }
    }
}

TEST_F(Stopping, EndsACopyBeforeItsTargetIsTouched) {
    const std::string src = scratch / "src/a";
    const std::string dst = scratch.file("dst/old", "longer text");
    for (const std::string& target : {dst, scratch / "new"}) {
        expectEnd([&] { copyFile(src, target); }, "open dst file '" + target + "' error");
        expectEnd([&] { renameFile(src, target); }, "open dst file '" + target + "' error");
    }
    EXPECT_EQ(test::treeAt(scratch / "dst"), (test::Tree{{"old", "file:longer text"}}));
    EXPECT_FALSE(fs::exists(scratch / "new"));
    EXPECT_EQ(test::readFile(src), "text");
}

TEST_F(Stopping, EndsTheCopyOfATree) {
    expectEnd([&] { copyDirectory(scratch / "src", scratch / "dst", nullptr); },
              "open src file '" + (scratch / "src/a") + "' error");
    expectEnd([&] { copyDirectory(scratch / "sub", scratch / "dst", nullptr); },
              "makeDirectory '" + (scratch / "dst/below") + "' error");
    EXPECT_TRUE(fs::is_empty(scratch / "dst"));
}

TEST_F(Stopping, EndsTheRemovalOfATree) {
    expectEnd([&] { removeDirectory(scratch / "src", true); },
              "remove file '" + (scratch / "src/a") + "' error");
    expectEnd([&] { removeDirectory(scratch / "sub", true); },
              "opendir '" + (scratch / "sub/below/") + "' error 4");
    EXPECT_TRUE(fs::exists(scratch / "src/a"));
    EXPECT_TRUE(fs::exists(scratch / "sub/below"));
}

TEST_F(Stopping, EndsTheListingOfALargeDirectory) {
    const std::string many = manyFiles();
    expectEnd([&] { scanDirectory(many); }, "opendir '" + many + "' error 4");
}

TEST_F(Stopping, LetsSignalsInBetweenSteps) {
    const std::string many = manyFiles();
    const HeldSignals signals;
    int handled = 0;
    const auto expectSignal = [&](const std::function<void()>& work) {
        ASSERT_EQ(::raise(SIGCHLD), 0);
        work();
        EXPECT_EQ(signals.handled(), ++handled);
    };
    expectSignal([&] { copyFile(scratch / "src/a", scratch / "new"); });
    expectSignal([&] { copyDirectory(scratch / "src", scratch / "dst", nullptr); });
    expectSignal([&] { removeDirectory(scratch / "src", true); });
    expectSignal([&] { scanDirectory(many); });
}

// A directory that becomes a link just before it is entered; the signals make the moment certain.
class SwappedDirectory : public Stopping {
  protected:
    SwappedDirectory() {
        scratch.file("outside/kept", "kept");
        swapped = scratch / "sub/below";
        aside = scratch / "aside";
        outside = scratch / "outside";
    }

    static void swap(int /*signal*/) {
        static_cast<void>(std::rename(swapped.c_str(), aside.c_str()));
        static_cast<void>(::symlink(outside.c_str(), swapped.c_str()));
    }

    static inline std::string swapped;
    static inline std::string aside;
    static inline std::string outside;
    HeldSignals signals;
    test::SignalAction swapping{SIGCHLD, swap};
};

TEST_F(SwappedDirectory, IsNotEmptiedThroughTheLink) {
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(thrownBy<IOException>([&] {
                  removeDirectory(scratch / "sub", true);
              }).rfind("opendir '" + swapped + "/' error ", 0),
              0U);
    EXPECT_TRUE(fs::is_symlink(swapped));
    EXPECT_EQ(test::readFile(scratch / "outside/kept"), "kept");
}

TEST_F(SwappedDirectory, IsNotCopiedThroughTheLink) {
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(thrownBy<IOException>([&] {
                  copyDirectory(scratch / "sub", scratch / "dst", nullptr);
              }).rfind("opendir '" + swapped + "/' error ", 0),
              0U);
    EXPECT_TRUE(fs::is_symlink(swapped));
    EXPECT_FALSE(fs::exists(scratch / "dst/below/kept"));
}

}  // namespace
}  // namespace corvane
