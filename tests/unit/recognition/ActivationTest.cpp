#include "recognition/Activation.h"

#include <cmath>
#include <gmock/gmock.h>
#include <vector>

namespace morvane {
namespace {

TEST(ActivationTest, BothFunctionsAreAsExactAsNumbersOfANetworkNeed)
{
    std::vector<float> values;
    for (int step = -4'000; step < 4'000; ++step)
        values.push_back(float(step) / 100);
    values.insert(values.end(), {-1e30F, 1e30F, 0, -0.0F, 1e-20F, -200, 200, 88});
    std::vector<float> logistic = values;
    std::vector<float> tangent = values;
    applyLogistic(logistic);
    applyTanh(tangent);
    for (std::size_t at = 0; at < values.size(); ++at) {
        EXPECT_NEAR(logistic[at], 1 / (1 + std::exp(-double(values[at]))), 2e-5) << values[at];
        EXPECT_NEAR(tangent[at], std::tanh(double(values[at])), 2e-5) << values[at];
    }
}

} // namespace
} // namespace morvane
