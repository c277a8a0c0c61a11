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

// Sixteenths up to 2, eighths up to 6, quarters above: 32 steps each.
constexpr int stepsPerPart = 32;
constexpr int widthSteps = 3 * stepsPerPart + 1;
static_assert(widestBoxes == 14);

int stepOfWidth(double width) {
    const double bounded = width > 0 ? std::min(width, widestBoxes) : 0;
    if (bounded < 2) {
        return static_cast<int>(std::lround(bounded * 16));
    }
    return static_cast<int>(bounded < 6 ? std::lround(stepsPerPart + (bounded - 2) * 8)
                                        : std::lround(2 * stepsPerPart + (bounded - 6) * 4));
}

double widthOfStep(int step) {
    if (step < stepsPerPart) {
        return step / 16.0;
    }
    return step < 2 * stepsPerPart ? 2 + (step - stepsPerPart) / 8.0 : 6 + (step - 2 * stepsPerPart) / 4.0;
}

/// Rounds weights of sum 1 to integers of the sum `total`, none over `limit`. The rounding's remainder goes to the
/// largest weight, and what is over the limit to its larger neighbour.
template <typename Integer>
void quantise(const std::array<double, mostTaps>& weights, int total, int limit, Integer* out) {
    std::array<int, mostTaps> rounded{};
    int sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        rounded[i] = static_cast<int>(std::lround(weights[i] * total));
        sum += rounded[i];
    }
    const auto largest = std::max_element(rounded.begin(), rounded.end());
    *largest += total - sum;
    if (*largest > limit) {
        const auto at = static_cast<std::size_t>(largest - rounded.begin());
        const double before = at > 0 ? weights[at - 1] : 0;
        const std::size_t neighbour = at == 0 || weights[at + 1] >= before ? at + 1 : at - 1;
        rounded[neighbour] += *largest - limit;
        *largest = limit;
    }
    std::transform(rounded.begin(), rounded.end(), out, [](int weight) { return static_cast<Integer>(weight); });
}

/// A table and the memory that it points to.
struct OwnedTable {
    PhaseTable table;
    std::vector<std::uint8_t> columns;
    std::vector<std::int16_t> rows;
};

std::array<double, mostTaps> weightsFrom(int first, int taps, double at, double width, double otherWidth) {
    std::array<double, mostTaps> weights{};
    for (int tap = 0; tap < taps; ++tap) {
        weights[static_cast<std::size_t>(tap)] = boxBoxTent(first + tap - at, width, otherWidth);
    }
    return weights;
}

void addColumns(OwnedTable& owned, double at, double width, double otherWidth) {
    const int taps = owned.table.columnTaps;
    std::array<std::uint8_t, mostTaps> line{};
    quantise(weightsFrom(1 - taps / 2, taps, at, width, otherWidth), 256, 255, line.data());
    for (std::size_t pair = 0; pair < static_cast<std::size_t>(taps); pair += 2) {
        for (int channel = 0; channel < 4; ++channel) {
            owned.columns.push_back(line[pair]);
            owned.columns.push_back(line[pair + 1]);
        }
    }
}

void addRows(OwnedTable& owned, int phase, double at, double width, double otherWidth) {
    const int first = static_cast<int>(std::floor(at - (width + otherWidth + 2) / 2)) + 1;
    std::array<std::int16_t, mostTaps> line{};
    quantise(weightsFrom(first, owned.table.rowTaps, at, width, otherWidth), 32768, 32767, line.data());
    if (phase == 0) {
        owned.table.firstRowStart = first;
    } else if (first > owned.table.firstRowStart) {
        owned.table.laterRowStartsFrom = std::min(owned.table.laterRowStartsFrom, phase);
    }
    for (std::size_t tap = 0; tap < static_cast<std::size_t>(owned.table.rowTaps); ++tap) {
        owned.rows.insert(owned.rows.end(), 8, line[tap]);
    }
}

std::unique_ptr<const OwnedTable> makeTable(double width, double otherWidth) {
    auto owned = std::make_unique<OwnedTable>();
    owned->table.columnTaps = tapsForWidths(width + otherWidth);
    const int rowTaps = static_cast<int>(std::ceil(width + otherWidth + 2));
    owned->table.rowTaps = rowTaps + rowTaps % 2;
    for (int phase = 0; phase < phases; ++phase) {
        const double at = static_cast<double>(phase) / phases;
        addColumns(*owned, at, width, otherWidth);
        addRows(*owned, phase, at, width, otherWidth);
    }
    owned->table.columns = owned->columns.data();
    owned->table.rows = owned->rows.data();
    return owned;
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
        slot.store(&kept_.back()->table, std::memory_order_release);
        return kept_.back()->table;
    }

private:
    std::array<std::atomic<const PhaseTable*>, std::size_t{widthSteps} * widthSteps> slots_{};
    std::mutex mutex_;
    std::vector<std::unique_ptr<const OwnedTable>> kept_;
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
    const int wideStep = stepOfWidth(wide);
    int narrowStep = stepOfWidth(narrow);
    // Both were rounded: together they must still fit the taps.
    while (narrowStep > 0 && widthOfStep(wideStep) + widthOfStep(narrowStep) > widestBoxes) {
        --narrowStep;
    }
    return shelf.at(wideStep, narrowStep);
}

} // namespace quillomat::raster
