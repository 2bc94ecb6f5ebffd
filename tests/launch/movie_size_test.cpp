#include "launch/movie_size.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ostream>
#include <random>

#include "support/held_signals.h"
#include "support/movie.h"
#include "support/scratch_directory.h"

namespace corvane {

// For the messages of failed tests.
void PrintTo(const MovieSize& size, std::ostream* out) {
    *out << size.width << " x " << size.height;
}

namespace {

using test::compressedMovie;
using test::MovieRect;
using test::packed;
using test::plainMovie;

constexpr MovieSize unknown{800, 600};

class SizeOfMovie : public ::testing::Test {
  protected:
    MovieSize sizeOf(const std::string& bytes) {
        return readSWFSize(scratch.file("movie.swf", bytes).c_str());
    }
    // In both forms, which must agree.
    MovieSize sizeOf(const MovieRect& rect, const std::string& rest = "rest of the movie") {
        const MovieSize plain = sizeOf(plainMovie(packed(rect) + rest));
        EXPECT_EQ(sizeOf(compressedMovie(packed(rect) + rest)), plain);
        return plain;
    }

    test::ScratchDirectory scratch;
};

TEST_F(SizeOfMovie, IsGivenInWholePixels) {
    EXPECT_EQ(sizeOf({15, {0, 11000, 0, 8000}}), (MovieSize{550, 400}));
    EXPECT_EQ(sizeOf({15, {0, 11019, 0, 7999}}), (MovieSize{550, 399}));
}

TEST_F(SizeOfMovie, IsTheDifferenceOfTheEdges) {
    EXPECT_EQ(sizeOf({16, {100, 11100, 2000, 10000}}), (MovieSize{550, 400}));
}

TEST_F(SizeOfMovie, IsNothingForFieldsWithoutBits) {
    EXPECT_EQ(sizeOf({0, {0, 0, 0, 0}}), (MovieSize{0, 0}));
    EXPECT_EQ(sizeOf({0, {0, 0, 0, 0}}, ""), (MovieSize{0, 0}));
}

TEST_F(SizeOfMovie, IsReadFromFieldsOfEveryWidth) {
    std::mt19937 random(20260903);
    for (unsigned bits = 1; bits <= 31; ++bits) {
        const std::uint32_t mask = (std::uint32_t{1} << bits) - 1;
        EXPECT_EQ(sizeOf({bits, {0, mask, 0, mask / 2}}, ""),
                  (MovieSize{static_cast<std::int32_t>(mask / 20),
                             static_cast<std::int32_t>(mask / 2 / 20)}))
            << bits;
        for (int round = 0; round < 8; ++round) {
            std::array<std::uint32_t, 4> edges{};
            for (std::uint32_t& edge : edges) {
                edge = static_cast<std::uint32_t>(random()) & mask;
            }
            const auto pixels = [](std::uint32_t low, std::uint32_t high) {
                return static_cast<std::int32_t>(
                    (static_cast<std::int64_t>(high) - static_cast<std::int64_t>(low)) / 20);
            };
            EXPECT_EQ(sizeOf({bits, edges}),
                      (MovieSize{pixels(edges[0], edges[1]), pixels(edges[2], edges[3])}))
                << bits << " bits, round " << round;
        }
    }
}

TEST_F(SizeOfMovie, IsNegativeWhereTheEdgesAreSwappedAndTruncatesTowardsZero) {
    EXPECT_EQ(sizeOf({10, {100, 0, 59, 0}}), (MovieSize{-5, -2}));
    EXPECT_EQ(sizeOf({10, {19, 0, 0, 19}}), (MovieSize{0, 0}));
    EXPECT_EQ(sizeOf({31, {0x7FFFFFFF, 0, 0, 0x7FFFFFFF}}), (MovieSize{-107374182, 107374182}));
}

TEST_F(SizeOfMovie, TakesTheFieldsForUnsigned) {
    EXPECT_EQ(sizeOf({12, {0, 0xFFF, 0, 0x800}}), (MovieSize{204, 102}));
}

TEST_F(SizeOfMovie, NeedsNoMoreThanTheFirstLetterOfTheSignature) {
    const std::string body = packed({15, {0, 11000, 0, 8000}}) + "rest";
    for (const char* signature : {"FWS", "XYZ", "ZWS", "cWS", "\x00\x00\x00"}) {
        EXPECT_EQ(sizeOf(test::movieHeader(std::string(signature, 3), 0) + body),
                  (MovieSize{550, 400}));
    }
    EXPECT_EQ(sizeOf(test::movieHeader("C??", body.size() + 8) + test::compressed(body)),
              (MovieSize{550, 400}));
    EXPECT_EQ(sizeOf(test::movieHeader("CWS", body.size() + 8) + body), unknown);
}

TEST_F(SizeOfMovie, IsUnknownWithoutAReadableFile) {
    EXPECT_EQ(readSWFSize((scratch / "missing.swf").c_str()), unknown);
    EXPECT_EQ(readSWFSize(scratch.path().c_str()), unknown);
    EXPECT_EQ(readSWFSize(""), unknown);
    ASSERT_EQ(::mkfifo((scratch / "pipe.swf").c_str(), 0600), 0);
    EXPECT_EQ(readSWFSize((scratch / "pipe.swf").c_str()), unknown);
    EXPECT_EQ(readSWFSize("/dev/zero"), unknown);
}

TEST_F(SizeOfMovie, IsUnknownForAPlainMovieThatEndsWithinTheRectangle) {
    const std::string rect = packed({31, {0, 20000, 0, 40000}});
    const std::string movie = plainMovie(rect + "rest");
    for (std::size_t size = 0; size <= movie.size(); ++size) {
        const MovieSize expected = size < 8 + rect.size() ? unknown : MovieSize{1000, 2000};
        EXPECT_EQ(sizeOf(movie.substr(0, size)), expected) << size;
    }
}

TEST_F(SizeOfMovie, IsUnknownForACompressedMovieThatEndsAnywhere) {
    const std::string movie = compressedMovie(packed({31, {0, 20000, 0, 40000}}) + "rest");
    for (std::size_t size = 0; size < movie.size(); ++size) {
        EXPECT_EQ(sizeOf(movie.substr(0, size)), unknown) << size;
    }
    EXPECT_EQ(sizeOf(movie), (MovieSize{1000, 2000}));
    EXPECT_EQ(sizeOf(movie + "more"), (MovieSize{1000, 2000}));
}

TEST_F(SizeOfMovie, IsUnknownForACompressedMovieWhoseBodyEndsWithinTheRectangle) {
    const std::string rect = packed({31, {0, 20000, 0, 40000}});
    for (std::size_t size = 0; size <= rect.size(); ++size) {
        EXPECT_EQ(sizeOf(compressedMovie(rect.substr(0, size))),
                  size < rect.size() ? unknown : MovieSize({1000, 2000}))
            << size;
    }
}

TEST_F(SizeOfMovie, IsKnownForABodyThatIsShorterThanClaimedButNotForALongerOne) {
    const std::string body = packed({15, {0, 11000, 0, 8000}}) + std::string(100'000, 'x');
    const auto claiming = [&](std::uint64_t length) {
        return sizeOf(test::movieHeader("CWS", length) + test::compressed(body));
    };
    const std::uint64_t real = body.size() + 8;
    for (const std::uint64_t length : {real, real + 1, real + 1'000'000, std::uint64_t{0x7FFFFFFF},
                                       std::uint64_t{0x80000000}, std::uint64_t{0xFFFFFFFF}}) {
        EXPECT_EQ(claiming(length), (MovieSize{550, 400})) << length;
    }
    for (const std::uint64_t length :
         {real - 1, std::uint64_t{20}, std::uint64_t{9}, std::uint64_t{8}, std::uint64_t{7},
          std::uint64_t{1}, std::uint64_t{0}}) {
        EXPECT_EQ(claiming(length), unknown) << length;
    }
}

TEST_F(SizeOfMovie, IsUnknownForDamagedData) {
    std::string movie = compressedMovie(packed({15, {0, 11000, 0, 8000}}) + "rest of the movie");
    movie.back() = static_cast<char>(movie.back() ^ 1);  // in the checksum
    EXPECT_EQ(sizeOf(movie), unknown);
    EXPECT_EQ(sizeOf(test::movieHeader("CWS", 1000) + "no zlib stream at all"), unknown);
}

// A zlib stream of `begin` and very many zeros, which are never in memory together.
std::string inflatingTo(const std::string& begin, std::size_t megabytes) {
    z_stream stream{};
    EXPECT_EQ(::deflateInit(&stream, Z_BEST_COMPRESSION), Z_OK);
    std::string out;
    std::string block = begin;
    for (std::size_t i = 0; i <= megabytes; ++i) {
        std::array<char, std::size_t{16} * 1024> room{};
        stream.next_in = reinterpret_cast<Bytef*>(block.data());
        stream.avail_in = static_cast<uInt>(block.size());
        do {
            stream.next_out = reinterpret_cast<Bytef*>(room.data());
            stream.avail_out = static_cast<uInt>(room.size());
            ::deflate(&stream, i == megabytes ? Z_FINISH : Z_NO_FLUSH);
            out.append(room.data(), room.size() - stream.avail_out);
        } while (stream.avail_out == 0);
        block.assign(std::size_t{1024} * 1024, '\0');
    }
    ::deflateEnd(&stream);
    return out;
}

// In kilobytes, as Linux counts.
long peakMemory() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

TEST_F(SizeOfMovie, NeedsLittleMemoryForABodyThatInflatesWithoutEnd) {
    const std::string body = inflatingTo(packed({15, {0, 11000, 0, 8000}}), 128);
    const long before = peakMemory();
    EXPECT_EQ(sizeOf(test::movieHeader("CWS", 0xFFFFFFFF) + body), (MovieSize{550, 400}));
    EXPECT_EQ(sizeOf(test::movieHeader("CWS", 1000) + body), unknown);
    EXPECT_LT(peakMemory() - before, 64 * 1024);
}

TEST_F(SizeOfMovie, IsReadFromAnyBytesWithoutHarm) {
    for (unsigned seed = 1; seed <= 2000; ++seed) {
        std::mt19937 random(seed);
        std::string bytes(random() % 64, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() % 256);
        }
        if (!bytes.empty() && seed % 2 == 0) {
            bytes[0] = 'C';
        }
        sizeOf(bytes);
    }
}

// What a body costs to inflate has nothing to do with the size of its file.
TEST_F(SizeOfMovie, LetsSignalsInWhileABodyIsInflated) {
    const HeldSignals signals;
    ASSERT_EQ(::raise(SIGCHLD), 0);
    EXPECT_EQ(sizeOf(compressedMovie(packed({15, {0, 11000, 0, 8000}}) + std::string(1000, 'x'))),
              (MovieSize{550, 400}));
    EXPECT_EQ(signals.handled(), 1);
}

TEST_F(SizeOfMovie, IsUnknownWhenTheProgramHasToStopBeforeABodyIsInflated) {
    const auto stopped = [this] {
        requestStop();
        std::exit(sizeOf(compressedMovie(packed({15, {0, 11000, 0, 8000}}))) == unknown ? 0 : 1);
    };
    EXPECT_EXIT(stopped(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace corvane
