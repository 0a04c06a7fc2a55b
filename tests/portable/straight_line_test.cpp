#include "tests/soak/straight_line.h"

#include <gtest/gtest.h>

#include <vector>

namespace vell::soak {
namespace {

TEST(StraightLine, TellsGrowthAndPassesOverWhatOnlySwings) {
    std::vector<double> rising, swinging, late;
    for (int i = 0; i < 101; ++i) {
        rising.push_back(50 + 0.25 * i);
        swinging.push_back(i % 2 == 0 ? 100 : 140);
        late.push_back(i < 50 ? 0 : 10);
    }
    EXPECT_NEAR(growth_of(rising), 25, 1e-9);
    EXPECT_NEAR(growth_of(swinging), 0, 1e-9);
    EXPECT_GT(growth_of(late), 10); // a step, as the line sees it
    EXPECT_NEAR(growth_of(std::vector<double>{7, 3}), -4, 1e-9);
    EXPECT_EQ(growth_of(std::vector<double>{7}), 0);
    EXPECT_EQ(growth_of({}), 0);
}

} // namespace
} // namespace vell::soak
