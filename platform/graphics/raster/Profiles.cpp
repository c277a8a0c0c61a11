#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <memory>
#include <mutex>
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

/// The integral of tentIntegral.
double tentSecondIntegral(double t) {
    if (t <= -1) {
        return 0;
    }
    if (t >= 1) {
        return t;
    }
    const double from = 1 + t;
    const double to = 1 - t;
    return t < 0 ? from * from * from / 6 : t + to * to * to / 6;
}

/// An outline of n samples on each side of the whole position holds the sum of both widths and the tent.
int tapsForWidths(double sum) {
    return sum <= 2 ? 4 : sum <= 6 ? 8 : sum <= 10 ? 12 : 16;
}

// Sixteenths up to 2, then eighths.
constexpr int fineSteps = 32;
constexpr int widthSteps = fineSteps + static_cast<int>((widestBoxes - 2) * 8) + 1;

int stepOfWidth(double width) {
    const double bounded = width > 0 ? std::min(width, widestBoxes) : 0;
    return static_cast<int>(std::lround(bounded < 2 ? bounded * 16 : fineSteps + (bounded - 2) * 8));
}

double widthOfStep(int step) {
    return step < fineSteps ? step / 16.0 : 2 + (step - fineSteps) / 8.0;
}

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

std::unique_ptr<PhaseTable> makeTable(double width, double otherWidth) {
    auto table = std::make_unique<PhaseTable>();
    table->taps = tapsForWidths(width + otherWidth);
    for (int phase = 0; phase < phases; ++phase) {
        std::array<double, weightLine> weights{};
        for (int tap = 0; tap < table->taps; ++tap) {
            const double position = tap - table->taps / 2 + 1;
            weights[static_cast<std::size_t>(tap)] =
                boxBoxTent(position - static_cast<double>(phase) / phases, width, otherWidth);
        }
        const std::size_t line = static_cast<std::size_t>(phase) * weightLine;
        quantise(weights, 128, 127, table->columns.data() + line);
        quantise(weights, 32768, 32767, table->rows.data() + line);
    }
    return table;
}

/// All tables that have been made, by their steps.
class TableShelf {
public:
    const PhaseTable& at(int wide, int narrow) {
        std::atomic<const PhaseTable*>& slot =
            slots_[static_cast<std::size_t>(wide) * widthSteps + static_cast<std::size_t>(narrow)];
        if (const PhaseTable* made = slot.load(std::memory_order_acquire)) {
            return *made;
        }
        const std::scoped_lock lock(mutex_);
        if (const PhaseTable* made = slot.load(std::memory_order_acquire)) {
            return *made;
        }
        kept_.push_back(makeTable(widthOfStep(wide), widthOfStep(narrow)));
        slot.store(kept_.back().get(), std::memory_order_release);
        return *kept_.back();
    }

private:
    std::array<std::atomic<const PhaseTable*>, std::size_t{widthSteps} * widthSteps> slots_{};
    std::mutex mutex_;
    std::vector<std::unique_ptr<const PhaseTable>> kept_;
};

} // namespace

double boxTent(double t, double width) {
    if (width < 1e-6) {
        return std::max(0.0, 1 - std::abs(t));
    }
    return (tentIntegral(t + width / 2) - tentIntegral(t - width / 2)) / width;
}

double boxBoxTent(double t, double width, double otherWidth) {
    if (std::min(width, otherWidth) < 1e-6) {
        return boxTent(t, std::max(width, otherWidth));
    }
    const double outer = (width + otherWidth) / 2;
    const double inner = (width - otherWidth) / 2;
    return (tentSecondIntegral(t + outer) - tentSecondIntegral(t + inner) - tentSecondIntegral(t - inner) +
            tentSecondIntegral(t - outer)) /
           (width * otherWidth);
}

double keysCubic(double t) {
    const double x = std::abs(t);
    if (x < 1) {
        return (1.5 * x - 2.5) * x * x + 1;
    }
    return x < 2 ? ((-0.5 * x + 2.5) * x - 4) * x + 2 : 0;
}

const PhaseTable& phaseTable(double boxWidth, double otherWidth) {
    static TableShelf shelf;
    const double wide = std::max(boxWidth, otherWidth);
    const double narrow = std::min(boxWidth, otherWidth);
    return shelf.at(stepOfWidth(wide), stepOfWidth(std::min(narrow, widestBoxes - std::min(wide, widestBoxes))));
}

} // namespace quillomat::raster
