#include "app/tray/popup_placement.hpp"

#include <gtest/gtest.h>

namespace velmora {
namespace {

// A 1920 × 1080 monitor with a 32-pixel panel at the top.
constexpr ScreenRect work{0, 32, 1920, 1048};

TEST(PopupPlacement, GoesToTheWorkAreaCornerNearestThePointer) {
    EXPECT_EQ(popupOrigin(work, {1800, 10}, 340, 440), (ScreenPoint{1920 - 4 - 340, 36}));
    EXPECT_EQ(popupOrigin(work, {30, 10}, 340, 440), (ScreenPoint{4, 36}));
    EXPECT_EQ(popupOrigin(work, {1900, 1070}, 340, 440),
              (ScreenPoint{1920 - 4 - 340, 32 + 1048 - 4 - 440}));
    EXPECT_EQ(popupOrigin(work, {5, 1079}, 340, 440), (ScreenPoint{4, 32 + 1048 - 4 - 440}));
}

TEST(PopupPlacement, CountsFromAWorkAreaOnASecondMonitor) {
    constexpr ScreenRect second{1920, 0, 1280, 1024};
    EXPECT_EQ(popupOrigin(second, {3100, 1000}, 340, 440),
              (ScreenPoint{1920 + 1280 - 4 - 340, 1024 - 4 - 440}));
    EXPECT_EQ(popupOrigin(second, {1930, 20}, 340, 440), (ScreenPoint{1924, 4}));
}

TEST(PopupPlacement, NeverStartsOutsideASmallWorkArea) {
    constexpr ScreenRect tiny{100, 50, 300, 400};
    EXPECT_EQ(popupOrigin(tiny, {390, 440}, 340, 440), (ScreenPoint{100, 50}));
}

}  // namespace
}  // namespace velmora
