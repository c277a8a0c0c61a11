#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace quillomat::raster {

namespace {

/// The tent's integral from -1 to t.
double tentIntegral(double t) {
    if (t <= -1) {
        return 0;
    }
    if (t >= 1) {
        return 1;
    }
    return t < 0 ? (1 + t) * (1 + t) / 2 : 1 - (1 - t) * (1 - t) / 2;
}

int tapsForWidth(double width) {
    return width <= 2 ? 4 : width <= 6 ? 8 : 12;
}

constexpr std::size_t tableWeights = std::size_t{phases} * weightLine;
constexpr int tableCount = widest * widthSteps + 1;

/// Rounds weights of sum 1 to integers of the sum `total`, none over `limit`. The rounding's remainder goes to the
/// largest weight, and what is over the limit to its larger neighbour.
template <typename Integer>
void quantise(const std::array<double, weightLine>& weights, int total, int limit, Integer* out) {
    std::array<int, weightLine> rounded{};
    int sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        rounded[i] = static_cast<int>(std::lround(weights[i] * total));
        sum += rounded[i];
    }
    const auto largest = std::max_element(rounded.begin(), rounded.end());
    *largest += total - sum;
    if (*largest > limit) {
        const auto at = static_cast<std::size_t>(largest - rounded.begin());
        const std::size_t neighbour = weights[at + 1] >= weights[at - 1] ? at + 1 : at - 1;
        rounded[neighbour] += *largest - limit;
        *largest = limit;
    }
    std::transform(rounded.begin(), rounded.end(), out, [](int weight) { return static_cast<Integer>(weight); });
}

struct Tables {
    std::vector<std::uint8_t> columns = std::vector<std::uint8_t>(tableWeights * tableCount);
    std::vector<std::int16_t> rows = std::vector<std::int16_t>(tableWeights * tableCount);

    Tables() {
        for (int step = 0; step < tableCount; ++step) {
            const double width = static_cast<double>(step) / widthSteps;
            const int taps = tapsForWidth(width);
            for (int phase = 0; phase < phases; ++phase) {
                std::array<double, weightLine> weights{};
                for (int tap = 0; tap < taps; ++tap) {
                    const double position = tap - taps / 2 + 1;
                    weights[static_cast<std::size_t>(tap)] =
                        boxTent(position - static_cast<double>(phase) / phases, width);
                }
                const std::size_t line =
                    tableWeights * static_cast<std::size_t>(step) + static_cast<std::size_t>(phase) * weightLine;
                quantise(weights, 128, 127, columns.data() + line);
                quantise(weights, 32768, 32767, rows.data() + line);
            }
        }
    }
};

} // namespace

double boxTent(double t, double width) {
    if (width < 1e-6) {
        return std::max(0.0, 1 - std::abs(t));
    }
    return (tentIntegral(t + width / 2) - tentIntegral(t - width / 2)) / width;
}

double keysCubic(double t) {
    const double x = std::abs(t);
    if (x < 1) {
        return (1.5 * x - 2.5) * x * x + 1;
    }
    return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

PhaseTable phaseTable(double boxWidth) {
    static const Tables tables;
    const int step = static_cast<int>(std::lround(std::clamp(boxWidth, 0.0, double{widest}) * widthSteps));
    const std::size_t start = tableWeights * static_cast<std::size_t>(step);
    return {tables.columns.data() + start, tables.rows.data() + start,
            tapsForWidth(static_cast<double>(step) / widthSteps)};
}

} // namespace quillomat::raster
