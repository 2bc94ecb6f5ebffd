#include "launch/movie_page.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "platform/system.h"
#include "support/movie.h"
#include "support/resource_limit.h"
#include "support/scratch_directory.h"
#include "support/thrown.h"

namespace corvane {
namespace {

// A page that is removed again.
class Page {
  public:
    explicit Page(const std::string& movie) : path(convertSWF(movie.c_str())) {}
    ~Page() { ::unlink(path.c_str()); }
    Page(const Page&) = delete;
    Page& operator=(const Page&) = delete;
    Page(Page&&) = delete;
    Page& operator=(Page&&) = delete;

    const std::string path;
};

TEST(MoviePage, ShowsTheMovieInItsOwnSize) {
    const test::ScratchDirectory scratch;
    const std::string movie = scratch.file(
        "movie.swf", test::plainMovie(test::packed({15, {0, 11000, 0, 8000}}) + "rest"));
    const Page page(movie);
    EXPECT_EQ(test::readFile(page.path),
              "<html><head><title> - </title></head><body><embed src=\"" + movie +
                  "\" quality=high "
                  "pluginspage=\"http://www.macromedia.com/shockwave/download/"
                  "index.cgi?P1_Prod_Version=ShockwaveFlash\" "
                  "type=\"application/x-shockwave-flash\" width=\"550\" height=\"400\" "
                  "salign=\"tl\" menu=\"0\"></embed></body></html>");
}

TEST(MoviePage, IsTheTemplateWithThePathAndTheNumbers) {
    constexpr std::size_t templateLength = 275;
    constexpr std::size_t conversions = 6;
    const std::string movie = "missing \xC4\x85&%s\"<.swf";
    const Page page(movie);
    const std::string text = test::readFile(page.path);
    EXPECT_EQ(text.size(),
              templateLength - conversions + movie.size() + std::string("800600").size());
    EXPECT_NE(text.find("src=\"" + movie + "\""), std::string::npos);
    EXPECT_NE(text.find("width=\"800\" height=\"600\""), std::string::npos);
    EXPECT_EQ(text.find('\n'), std::string::npos);
}

TEST(MoviePage, HoldsAPathOfAnyLength) {
    const std::string movie(100'000, 'm');
    const Page page(movie);
    EXPECT_EQ(test::readFile(page.path).size(), 275U - 6U + movie.size() + 6U);
}

TEST(MoviePage, ShowsNegativeAndEmptySizesAsTheyAre) {
    const test::ScratchDirectory scratch;
    const Page page(
        scratch.file("movie.swf", test::plainMovie(test::packed({10, {100, 0, 0, 0}}))));
    EXPECT_NE(test::readFile(page.path).find("width=\"-5\" height=\"0\""), std::string::npos);
}

TEST(MoviePage, IsANewFileThatOnlyItsOwnerCanRead) {
    const mode_t previous = ::umask(0);
    const Page one("a.swf");
    const Page other("a.swf");
    ::umask(previous);
    EXPECT_NE(one.path, other.path);
    const std::string pattern = platform::temporaryNamePattern;
    const std::string begin = pattern.substr(0, pattern.find('X'));
    for (const std::string& path : {one.path, other.path}) {
        struct stat info {};
        ASSERT_EQ(::lstat(path.c_str(), &info), 0);
        EXPECT_EQ(info.st_mode, static_cast<mode_t>(S_IFREG | 0600));
        EXPECT_EQ(path.substr(0, begin.size()), begin);
        EXPECT_EQ(path.substr(path.size() - 5), ".html");
        EXPECT_EQ(path.find(":/"), std::string::npos);
    }
}

TEST(MoviePage, IsRemovedWhenItCannotBeWritten) {
    std::string message;
    {
        const test::FileSizeLimit full(100);
        message = test::thrownBy<IOException>([] { convertSWF("a.swf"); });
    }
    const std::string begin = "cannot write page '";
    ASSERT_EQ(message.substr(0, begin.size()), begin);
    const std::string path =
        message.substr(begin.size(), message.find('\'', begin.size()) - begin.size());
    EXPECT_EQ(message, test::withCode(begin + path + "'", EFBIG));
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST(MoviePage, LeavesNoDescriptorOpen) {
    const int before = test::nextDescriptor();
    const Page page("a.swf");
    EXPECT_EQ(test::nextDescriptor(), before);
}

}  // namespace
}  // namespace corvane
