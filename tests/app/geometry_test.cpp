#include "app/core/geometry.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

const Rect screen{0, 0, 1440, 875};

TEST(ResizeKeepingBottom, GrowsAboutTheCentreWithTheBottomKept) {
    const Rect frame{500, 300, 320, 216};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, screen), (Rect{470, 300, 380, 528}));
}

TEST(ResizeKeepingBottom, ShrinksAboutTheCentre) {
    const Rect frame{470, 300, 380, 528};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{320, 216}, screen), (Rect{500, 300, 320, 216}));
}

TEST(ResizeKeepingBottom, NearTheTopTheBottomMovesDownOnlyAsFarAsNeeded) {
    const Rect frame{500, 600, 320, 216};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, screen), (Rect{470, 347, 380, 528}));
}

TEST(ResizeKeepingBottom, TallerThanTheScreenTheBottomLimitWins) {
    const Rect frame{500, 100, 320, 216};
    const Rect small{0, 50, 1440, 400};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, small), (Rect{470, 50, 380, 528}));
}

TEST(ResizeKeepingBottom, PastTheRightEdgeMovesLeft) {
    const Rect frame{1100, 300, 320, 216};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, screen).x, 1060);
}

TEST(ResizeKeepingBottom, WiderThanTheScreenTheLeftLimitWins) {
    const Rect frame{10, 300, 320, 216};
    const Rect narrow{20, 0, 300, 875};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, narrow).x, 20);
}

TEST(ResizeKeepingBottom, WithoutAScreenNothingIsClamped) {
    const Rect frame{-100, 2000, 320, 216};
    EXPECT_EQ(resizeKeepingBottom(frame, Size{380, 528}, std::nullopt),
              (Rect{-130, 2000, 380, 528}));
}

}  // namespace
}  // namespace velmora
