// Bounds, display scaling and zones.
#include "src/dragdrop/drop_zone.h"

#include <gtest/gtest.h>

namespace vell::test {
namespace {

using namespace dragdrop;

TEST(DropZone, BoundsAreFourNumbers) {
    const auto bounds = [](std::u16string_view text) {
        return parse_bounds(text).has_value() ? *parse_bounds(text) : Rectangle{};
    };
    const Rectangle expected{10, 20, 110, 60};
    for (const std::u16string_view text :
         {u"10 20 110 60", u" 10  20\t110 60 0", u"10.9 20,5 110.0 60 90"})
        EXPECT_EQ(bounds(text), expected) << std::string(text.begin(), text.end());
    EXPECT_EQ(bounds(u"-5 -.5 99999999999999999999 1"), (Rectangle{-5, 0, 2'147'483'647, 1}));
    // The 1,000th character is not read.
    EXPECT_EQ(bounds(std::u16string(989, u' ') + u"1 2 300 400"), (Rectangle{1, 2, 300, 40}));
    for (const std::u16string_view text :
         {u"10 20 110", u"10,20,110,60", u"10 20 x 60", u"10 20 110 60pt", u"10 . 110 60",
          u"110 20 10 60", u"10 20 110 20", u"   "})
        EXPECT_EQ(bounds(text), Rectangle{}) << std::string(text.begin(), text.end());
}

TEST(DropZone, ScaleIsAQuarterStepDownwards) {
    const struct {
        std::int32_t outer, content, quarters;
    } cases[] = {{1249, 1000, 4}, {1250, 1000, 5}, {2499, 1000, 9},       {2750, 1000, 10},
                 {500, 1000, 4},  {800, 0, 4},     {2'147'483'647, 1, 10}};
    for (const auto& [outer, content, quarters] : cases)
        EXPECT_EQ(scale_in_quarters(outer, content), quarters) << outer;
    EXPECT_EQ(scaled({11, 30, 2'000'000'000, 90}, 6), (Rectangle{16, 45, 2'147'483'647, 135}));
}

TEST(DropZone, OffsetAndScrollPositionAreAddedToThePoint) {
    const Rectangle bounds{10, 100, 110, 200};
    const Zone plain{.bounds = bounds};
    EXPECT_TRUE(plain.contains({10, 100}, 50) && plain.contains({109, 199}, 0));
    for (const Point outside : {Point{9, 150}, Point{110, 150}, Point{50, 99}, Point{50, 200}})
        EXPECT_FALSE(plain.contains(outside, 0)) << outside.x << " " << outside.y;
    const Zone offset{.bounds = bounds, .vertical_offset = -80};
    EXPECT_TRUE(offset.contains({50, 180}, 0) && !offset.contains({50, 179}, 0));
    const Zone scrolling{.bounds = bounds, .scrolls = true};
    EXPECT_TRUE(scrolling.contains({50, 50}, 50) && !scrolling.contains({50, 150}, 50));
    EXPECT_EQ(scrolling.outline(150), (Rectangle{10, -50, 110, 50}));
}

} // namespace
} // namespace vell::test
