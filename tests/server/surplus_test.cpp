#include "server/surplus.h"

#include <gtest/gtest.h>

namespace corvane {
namespace {

TEST(Surplus, IsEmptyForASocketThatHasNone) {
    Surplus surplus;
    surplus.take(3, 1);
    surplus.forget(3);
    EXPECT_EQ(surplus.of(3), "");
}

TEST(Surplus, IsTakenPieceByPiece) {
    Surplus surplus;
    surplus.keep(3, "abcdef");
    surplus.take(3, 2);
    EXPECT_EQ(surplus.of(3), "cdef");
    surplus.take(3, 4);
    EXPECT_EQ(surplus.of(3), "");
}

TEST(Surplus, BelongsToOneSocket) {
    Surplus surplus;
    surplus.keep(3, "three");
    surplus.keep(4, "four");
    surplus.forget(3);
    EXPECT_EQ(surplus.of(3), "");
    EXPECT_EQ(surplus.of(4), "four");
}

}  // namespace
}  // namespace corvane
