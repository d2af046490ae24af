#pragma once

#include <gtest/gtest.h>

#include <vector>

// Compares a whole list of measured values with the expected ones, each to within tolerance,
// naming the element that is off.
inline void expectNear(const std::vector<double>& expected, const std::vector<double>& actual,
                       double tolerance) {
    ASSERT_EQ(expected.size(), actual.size());
    for (std::size_t k = 0; k < expected.size(); ++k) {
        EXPECT_NEAR(expected[k], actual[k], tolerance) << "element " << k;
    }
}
