#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
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

/// n samples on each side of a position hold the sum of both widths and the tent, and the slack.
int tapsForReach(double sum, double slack) {
    const double diameter = sum + 2 * slack;
    return diameter <= 2 ? 4 : diameter <= 6 ? 8 : 16;
}

// Below each bound, that many steps to a sample. Half as many cost 1 to 2 dB on fine patterns.
struct WidthPart {
    double from = 0;
    double to = 0;
    int stepsPerSample = 0;
    int stepsBefore = 0;
};
constexpr WidthPart widthParts[] = {{0, 6, 32, 0}, {6, widestBoxes, 16, 192}};
constexpr int widthSteps = 192 + 128 + 1;

int stepOfWidth(double width) {
    const double bounded = width > 0 ? std::min(width, widestBoxes) : 0;
    const WidthPart& part = widthParts[bounded < 6 ? 0 : 1];
    return part.stepsBefore + static_cast<int>(std::lround((bounded - part.from) * part.stepsPerSample));
}

double widthOfStep(int step) {
    const WidthPart& part = widthParts[step < 192 ? 0 : 1];
    return part.from + static_cast<double>(step - part.stepsBefore) / part.stepsPerSample;
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

/// The profile sampled at the taps about a position of that phase.
std::array<double, mostTaps> weightsAt(int phase, int taps, double width, double otherWidth) {
    std::array<double, mostTaps> weights{};
    for (int tap = 0; tap < taps; ++tap) {
        weights[static_cast<std::size_t>(tap)] =
            boxBoxTent(tap + 1 - taps / 2 - static_cast<double>(phase) / phases, width, otherWidth);
    }
    return weights;
}

/// A table and the memory that it points to.
struct OwnedColumns {
    ColumnTable table;
    std::vector<std::uint8_t> bytes;
};

struct OwnedRows {
    RowTable table;
    std::vector<std::int16_t> numbers;
};

std::unique_ptr<const OwnedColumns> makeColumns(double width, double otherWidth, int taps) {
    auto owned = std::make_unique<OwnedColumns>();
    owned->table.taps = taps;
    for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
        std::array<std::uint8_t, mostTaps> line{};
        quantise(weightsAt(phase, taps, width, otherWidth), 256, 255, line.data());
        owned->bytes.insert(owned->bytes.end(), line.begin(), line.begin() + taps);
    }
    owned->table.lines = owned->bytes.data() + std::size_t{phasesBeyond} * static_cast<std::size_t>(taps);
    return owned;
}

std::unique_ptr<const OwnedRows> makeRows(double width, double otherWidth, int taps) {
    auto owned = std::make_unique<OwnedRows>();
    owned->table.taps = taps;
    const int inLine = owned->table.line();
    owned->numbers.resize(static_cast<std::size_t>(phases * inLine));
    for (int phase = 0; phase < phases; ++phase) {
        std::array<std::int16_t, mostTaps> line{};
        quantise(weightsAt(phase, taps, width, otherWidth), 32768, 32767, line.data());
        std::copy_n(line.begin(), taps, owned->numbers.begin() + static_cast<std::ptrdiff_t>(phase) * inLine);
    }
    owned->table.lines = owned->numbers.data();
    return owned;
}

/// All tables of one kind that have been made, by their steps and taps.
template <typename Owned> class TableShelf {
public:
    using Table = decltype(Owned::table);
    using Maker = std::unique_ptr<const Owned> (*)(double, double, int);

    const Table& at(int wide, int narrow, int taps, Maker make) {
        auto& slot = slots_[(static_cast<std::size_t>(wide) * widthSteps + static_cast<std::size_t>(narrow)) * kinds +
                            static_cast<std::size_t>(taps - 1) / 4];
        if (const Table* made = slot.load(std::memory_order_acquire)) {
            return *made;
        }
        const std::scoped_lock lock(mutex_);
        if (const Table* made = slot.load(std::memory_order_acquire)) {
            return *made;
        }
        kept_.push_back(make(widthOfStep(wide), widthOfStep(narrow), taps));
        slot.store(&kept_.back()->table, std::memory_order_release);
        return kept_.back()->table;
    }

private:
    static constexpr std::size_t kinds = 4;
    std::array<std::atomic<const Table*>, std::size_t{widthSteps} * widthSteps * kinds> slots_{};
    std::mutex mutex_;
    std::vector<std::unique_ptr<const Owned>> kept_;
};

struct WidthPair {
    int wide = 0;
    int narrow = 0;

    WidthPair(double width, double otherWidth)
        : wide(stepOfWidth(std::max(width, otherWidth))), narrow(stepOfWidth(std::min(width, otherWidth))) {
        // Both were rounded: together they must still fit the taps.
        while (narrow > 0 && sum() > widestBoxes) {
            --narrow;
        }
    }

    [[nodiscard]] double sum() const { return widthOfStep(wide) + widthOfStep(narrow); }
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

const ColumnTable& columnTable(double boxWidth, double otherWidth, double slack) {
    static TableShelf<OwnedColumns> shelf;
    const WidthPair widths(boxWidth, otherWidth);
    return shelf.at(widths.wide, widths.narrow, tapsForReach(widths.sum(), slack), makeColumns);
}

const RowTable& rowTable(double boxWidth, double otherWidth) {
    static TableShelf<OwnedRows> shelf;
    const WidthPair widths(boxWidth, otherWidth);
    const int taps = static_cast<int>(std::ceil(widths.sum() + 2));
    return shelf.at(widths.wide, widths.narrow, taps + taps % 2, makeRows);
}

const std::uint8_t* steadyLines(const ColumnTable& columns, int step) {
    static std::mutex mutex;
    static std::map<std::pair<const ColumnTable*, int>, std::vector<std::uint8_t>> made;
    const std::scoped_lock lock(mutex);
    std::vector<std::uint8_t>& lines = made[{&columns, step}];
    if (lines.empty()) {
        for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
            for (int row = 0; row < 4; ++row) {
                const int ofRow = std::clamp(phase + row * step, -phasesBeyond, phases + phasesBeyond - 1);
                for (int tap = 0; tap < 4; ++tap) {
                    lines.push_back(columns.weight(ofRow, tap));
                }
            }
        }
    }
    return lines.data() + std::size_t{phasesBeyond} * 16;
}

} // namespace quillomat::raster
