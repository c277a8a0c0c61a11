#include "platform/graphics/raster/FilterTables.h"

#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <numeric>
#include <utility>
#include <vector>

namespace quillomat::raster {

namespace {

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

/// Rounds weights to integers of the sum `total`, none over `limit`, by rounding what they come to so far: an edge errs
/// by half a step at most. What is over the limit goes to the larger neighbour.
template <typename Integer>
void quantise(const std::array<double, mostTaps>& weights, int total, int limit, Integer* out) {
    std::array<int, mostTaps> rounded{};
    const double whole = std::accumulate(weights.begin(), weights.end(), 0.0);
    double exact = 0;
    int sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        exact += weights[i] / whole * total;
        rounded[i] = static_cast<int>(std::floor(exact + 0.5)) - sum;
        sum += rounded[i];
    }
    const auto largest = std::max_element(rounded.begin(), rounded.end());
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
    std::vector<std::uint8_t> lines;

    [[nodiscard]] std::size_t bytes() const { return lines.size(); }
};

struct OwnedRows {
    RowTable table;
    std::vector<std::int16_t> lines;

    [[nodiscard]] std::size_t bytes() const { return lines.size() * sizeof lines[0]; }
};

std::unique_ptr<const OwnedColumns> makeColumns(double width, double otherWidth, int taps) {
    auto owned = std::make_unique<OwnedColumns>();
    owned->table.taps = taps;
    for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
        std::array<std::uint8_t, mostTaps> line{};
        quantise(weightsAt(phase, taps, width, otherWidth), 256, 255, line.data());
        owned->lines.insert(owned->lines.end(), line.begin(), line.begin() + taps);
    }
    owned->table.lines = owned->lines.data() + std::size_t{phasesBeyond} * static_cast<std::size_t>(taps);
    return owned;
}

std::unique_ptr<const OwnedRows> makeRows(double width, double otherWidth, int taps) {
    auto owned = std::make_unique<OwnedRows>();
    owned->table.taps = taps;
    const int inLine = owned->table.line();
    owned->lines.resize(static_cast<std::size_t>(phases * inLine));
    for (int phase = 0; phase < phases; ++phase) {
        std::array<std::int16_t, mostTaps> line{};
        quantise(weightsAt(phase, taps, width, otherWidth), 32768, 32767, line.data());
        std::copy_n(line.begin(), taps, owned->lines.begin() + static_cast<std::ptrdiff_t>(phase) * inLine);
    }
    owned->table.lines = owned->lines.data();
    return owned;
}

/// All tables of one kind that are kept, by their steps and taps. Those that are there are found without a lock. There
/// is one shelf of each kind.
template <typename Owned> class TableShelf {
public:
    using Table = decltype(Owned::table);

    [[nodiscard]] static std::size_t placeOf(int wide, int narrow, int taps) {
        return (static_cast<std::size_t>(wide) * widthSteps + static_cast<std::size_t>(narrow)) * kinds +
               static_cast<std::size_t>(taps - 1) / 4;
    }
    [[nodiscard]] static const Table* found(std::size_t place) {
        return places_[place].load(std::memory_order_acquire);
    }
    const Table& keep(std::size_t place, std::unique_ptr<const Owned> table) {
        kept_.emplace_back(place, std::move(table));
        const Table& made = kept_.back().second->table;
        places_[place].store(&made, std::memory_order_release);
        return made;
    }
    void forget() {
        for (const auto& [place, table] : kept_) {
            places_[place].store(nullptr, std::memory_order_relaxed);
        }
        kept_.clear();
    }

private:
    static constexpr std::size_t kinds = 4;
    // Zeros of the program's own, three megabytes of which a run touches some pages.
    static constinit inline std::array<std::atomic<const Table*>, std::size_t{widthSteps} * widthSteps * kinds>
        places_{};
    std::vector<std::pair<std::size_t, std::unique_ptr<const Owned>>> kept_;
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

/// Every table there is. They are dropped when they have become many and nobody is drawing: a marker that is dragged
/// for long asks for ever new ones.
class Shelves {
public:
    [[nodiscard]] static Shelves& instance() {
        static Shelves shelves;
        return shelves;
    }

    void beginUse() {
        const std::scoped_lock lock(mutex_);
        ++users_;
    }
    void endUse() {
        const std::scoped_lock lock(mutex_);
        if (--users_ == 0 && bytes_ > mostTableBytes) {
            columns_.forget();
            rows_.forget();
            steady_.clear();
            bytes_ = 0;
        }
    }
    [[nodiscard]] std::size_t bytes() {
        const std::scoped_lock lock(mutex_);
        return bytes_;
    }

    const ColumnTable& columns(const WidthPair& widths, int taps) { return at(columns_, widths, taps, makeColumns); }
    const RowTable& rows(const WidthPair& widths, int taps) { return at(rows_, widths, taps, makeRows); }
    const std::uint8_t* steadyLines(const ColumnTable& columns, int step) {
        const std::scoped_lock lock(mutex_);
        std::vector<std::uint8_t>& lines = steady_[{&columns, step}];
        if (lines.empty()) {
            lines = linesOfAllRows(columns, step);
            bytes_ += lines.size();
        }
        return lines.data() + std::size_t{phasesBeyond} * 16;
    }

private:
    template <typename Owned>
    const typename TableShelf<Owned>::Table& at(TableShelf<Owned>& shelf, const WidthPair& widths, int taps,
                                                std::unique_ptr<const Owned> (*make)(double, double, int)) {
        const std::size_t place = TableShelf<Owned>::placeOf(widths.wide, widths.narrow, taps);
        if (const auto* table = shelf.found(place)) {
            return *table;
        }
        const std::scoped_lock lock(mutex_);
        if (const auto* table = shelf.found(place)) {
            return *table;
        }
        auto made = make(widthOfStep(widths.wide), widthOfStep(widths.narrow), taps);
        bytes_ += made->bytes();
        return shelf.keep(place, std::move(made));
    }

    static std::vector<std::uint8_t> linesOfAllRows(const ColumnTable& columns, int step) {
        std::vector<std::uint8_t> lines;
        lines.reserve(std::size_t{2} * phases * 16);
        for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
            for (int row = 0; row < 4; ++row) {
                const int ofRow = std::clamp(phase + row * step, -phasesBeyond, phases + phasesBeyond - 1);
                for (int tap = 0; tap < 4; ++tap) {
                    lines.push_back(columns.weight(ofRow, tap));
                }
            }
        }
        return lines;
    }

    std::mutex mutex_;
    int users_ = 0;
    std::size_t bytes_ = 0;
    TableShelf<OwnedColumns> columns_;
    TableShelf<OwnedRows> rows_;
    std::map<std::pair<const ColumnTable*, int>, std::vector<std::uint8_t>> steady_;
};

} // namespace

TablesInUse::TablesInUse() {
    Shelves::instance().beginUse();
}

TablesInUse::~TablesInUse() {
    Shelves::instance().endUse();
}

std::size_t keptTableBytes() {
    return Shelves::instance().bytes();
}

const ColumnTable& columnTable(double boxWidth, double otherWidth, double slack) {
    const WidthPair widths(boxWidth, otherWidth);
    return Shelves::instance().columns(widths, tapsForReach(widths.sum(), slack));
}

const RowTable& rowTable(double boxWidth, double otherWidth) {
    const WidthPair widths(boxWidth, otherWidth);
    const int taps = static_cast<int>(std::ceil(widths.sum() + 2));
    return Shelves::instance().rows(widths, taps + taps % 2);
}

const std::uint8_t* steadyLines(const ColumnTable& columns, int step) {
    return Shelves::instance().steadyLines(columns, step);
}

} // namespace quillomat::raster
