#include "corvane-play/subject.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/scratch_directory.h"
#include "text/exception.h"

namespace corvane::play {
namespace {

namespace fs = std::filesystem;

class SubjectTest : public ::testing::Test {
  protected:
    void make(const std::string& name) const { std::ofstream(place / name) << "x"; }

    test::ScratchDirectory scratch;
    fs::path place = fs::canonical(scratch.path());
};

TEST_F(SubjectTest, TellsMoviesFromPages) {
    make("a.swf");
    make("b.HTML");
    const Subject movie = findSubject(place / "a.swf");
    EXPECT_EQ(movie.movie, "a.swf");
    EXPECT_EQ(movie.directory, place.string() + "/");
    EXPECT_EQ(findSubject(place / "b.HTML").page, "b.HTML");
}

TEST_F(SubjectTest, TakesTheOnlyMovieOfADirectoryOrItsPage) {
    make("a.swf");
    EXPECT_EQ(findSubject(place).movie, "a.swf");
    make("index.html");
    EXPECT_EQ(findSubject(place).page, "index.html");
}

TEST_F(SubjectTest, ServesTheDirectoryThatALinkLeadsTo) {
    fs::create_directory(place / "real");
    make("real/a.swf");
    fs::create_symlink("real/a.swf", place / "link.swf");
    EXPECT_EQ(findSubject(place / "link.swf").directory, place.string() + "/real/");
}

TEST_F(SubjectTest, RefusesWhatCannotBePlayed) {
    EXPECT_THROW(findSubject(place), Exception);
    EXPECT_THROW(findSubject(place / "missing"), Exception);
    make("a.swf");
    make("b.swf");
    EXPECT_THROW(findSubject(place), Exception);
    make(".hidden.swf");
    EXPECT_THROW(findSubject(place / ".hidden.swf"), Exception);
}

}  // namespace
}  // namespace corvane::play
