#include "platform/graphics/raster/FilterTables.h"

#include "platform/graphics/raster/Profiles.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
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

// The narrower box only softens the profile's shoulders. As long as the wider one makes up for what it spreads less or
// more, quarters of a sample do for it: in finer steps no picture is nearer to the truth, but a slanted one asks for
// four times as many tables, which leave the caches.
constexpr int narrowStepsPerSample = 4;
constexpr int narrowSteps = static_cast<int>(widestBoxes / 2) * narrowStepsPerSample + 1;

/// Two boxes as tables know them, which together spread as much as those that were asked for.
struct WidthPair {
    int wide = 0;
    int narrow = 0;

    WidthPair(double width, double otherWidth) {
        const double squares = width * width + otherWidth * otherWidth;
        narrow = static_cast<int>(
            std::lround(std::clamp(std::min(width, otherWidth), 0.0, widestBoxes / 2) * narrowStepsPerSample));
        const auto makeUp = [&] {
            wide = stepOfWidth(std::sqrt(std::max(squares - narrowWidth() * narrowWidth(), 0.0)));
        };
        makeUp();
        // Together they must fit the taps.
        while (narrow > 0 && (wideWidth() < narrowWidth() || sum() > widestBoxes)) {
            --narrow;
            makeUp();
        }
    }

    [[nodiscard]] double wideWidth() const { return widthOfStep(wide); }
    [[nodiscard]] double narrowWidth() const { return static_cast<double>(narrow) / narrowStepsPerSample; }
    [[nodiscard]] double sum() const { return wideWidth() + narrowWidth(); }
};

/// As many rows as they and the tent reach, and perhaps another one.
int evenTapsFor(const WidthPair& widths) {
    const int taps = static_cast<int>(std::ceil(widths.sum() + 2));
    return taps + taps % 2;
}

/// The profile of two boxes and a tent at distances of whole phases from its middle.
class SampledProfile {
public:
    explicit SampledProfile(const WidthPair& widths) : SampledProfile(widths.wideWidth(), widths.narrowWidth()) {}
    SampledProfile(double width, double otherWidth) {
        const int reach = static_cast<int>(std::ceil(((width + otherWidth) / 2 + 1) * phases));
        samples_.reserve(static_cast<std::size_t>(reach));
        for (int distance = 0; distance < reach; ++distance) {
            samples_.push_back(boxBoxTent(static_cast<double>(distance) / phases, width, otherWidth));
        }
    }

    [[nodiscard]] double at(int distance) const {
        const auto index = static_cast<std::size_t>(std::abs(distance));
        return index < samples_.size() ? samples_[index] : 0;
    }

private:
    std::vector<double> samples_;
};

/// The weights of the taps about a position of that phase, as integers of the sum `total`, none over `limit`. What they
/// come to so far is rounded, so that an edge errs by half a step at most. What is over the limit goes to the larger
/// neighbour.
template <typename Integer>
void writeLine(const SampledProfile& profile, int phase, int taps, int total, int limit, Integer* line) {
    std::array<double, mostTaps> weights{};
    double whole = 0;
    for (int tap = 0; tap < taps; ++tap) {
        const double weight = profile.at((tap + 1 - taps / 2) * phases - phase);
        weights[static_cast<std::size_t>(tap)] = weight;
        whole += weight;
    }
    const double scale = total / whole;
    std::array<int, mostTaps> rounded{};
    double exact = 0.5;
    int sum = 0;
    std::size_t largest = 0;
    for (std::size_t tap = 0; tap < static_cast<std::size_t>(taps); ++tap) {
        exact += weights[tap] * scale;
        rounded[tap] = static_cast<int>(exact) - sum;
        sum += rounded[tap];
        largest = rounded[tap] > rounded[largest] ? tap : largest;
    }
    if (rounded[largest] > limit) {
        const double before = largest > 0 ? weights[largest - 1] : 0;
        const std::size_t neighbour = largest == 0 || weights[largest + 1] >= before ? largest + 1 : largest - 1;
        rounded[neighbour] += rounded[largest] - limit;
        rounded[largest] = limit;
    }
    std::transform(rounded.begin(), rounded.begin() + taps, line,
                   [](int weight) { return static_cast<Integer>(weight); });
}

/// A table and the memory that it points to.
struct OwnedColumns {
    static constexpr std::size_t narrowBoxes = narrowSteps; // different ones that the narrower box may be
    ColumnTable table;
    std::vector<std::uint8_t> lines;

    [[nodiscard]] std::size_t bytes() const { return lines.size(); }
};

struct OwnedRows {
    static constexpr std::size_t narrowBoxes = narrowSteps;
    RowTable table;
    std::vector<std::int16_t> lines;

    [[nodiscard]] std::size_t bytes() const { return lines.size() * sizeof lines[0]; }
};

/// A register of them.
struct alignas(64) WeightsOfPhases {
    std::array<std::uint8_t, linePhases> weights{};
};

struct OwnedLineRows {
    static constexpr std::size_t narrowBoxes = 1;
    LineRows table;
    std::vector<WeightsOfPhases> weights;

    [[nodiscard]] std::size_t bytes() const { return weights.size() * sizeof weights[0]; }
};

/// A kind of its own, as its tables have the same widths.
struct OwnedLineHalves : OwnedLineRows {};

struct OwnedLineColumns {
    static constexpr std::size_t narrowBoxes = 1;
    LineColumns table;
    std::vector<std::int16_t> lines;

    [[nodiscard]] std::size_t bytes() const { return lines.size() * sizeof lines[0]; }
};

std::unique_ptr<const OwnedColumns> makeColumns(const WidthPair& widths, int taps) {
    auto owned = std::make_unique<OwnedColumns>();
    const SampledProfile profile(widths);
    const auto inLine = static_cast<std::size_t>(taps);
    owned->lines.resize((phases + 2 * phasesBeyond) * inLine);
    std::uint8_t* const first = owned->lines.data() + phasesBeyond * inLine;
    owned->table = {taps, first};
    for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
        writeLine(profile, phase, taps, 256, 255, first + static_cast<std::ptrdiff_t>(phase) * taps);
    }
    return owned;
}

std::unique_ptr<const OwnedRows> makeRows(const WidthPair& widths, int taps) {
    auto owned = std::make_unique<OwnedRows>();
    const SampledProfile profile(widths);
    owned->table.taps = taps;
    const int inLine = owned->table.line();
    owned->lines.resize(static_cast<std::size_t>(phases * inLine + beyondRowLines));
    owned->table.lines = owned->lines.data();
    for (int phase = 0; phase < phases; ++phase) {
        writeLine(profile, phase, taps, 32768, 32767,
                  owned->lines.data() + static_cast<std::ptrdiff_t>(phase) * inLine);
    }
    return owned;
}

/// Of one box, or of its halves beside each other.
template <typename Owned, int kParts> std::unique_ptr<const Owned> makeLineRows(const WidthPair& widths, int taps) {
    auto owned = std::make_unique<Owned>();
    const double width = widths.wideWidth() / kParts;
    const auto apart = static_cast<int>(std::lround(width * phases));
    const SampledProfile profile(width, 0);
    owned->table.taps = taps;
    const int weightsOfPart = taps * linePhases;
    owned->weights.resize(static_cast<std::size_t>(kParts * taps * (1 + 4)));
    std::uint8_t* const first = owned->weights.data()->weights.data();
    for (int part = 0; part < kParts; ++part) {
        std::uint8_t* const weights = first + part * weightsOfPart;
        std::uint8_t* const pairs = first + (kParts + 4 * part) * weightsOfPart;
        owned->table.weights[part] = weights;
        owned->table.pairs[part] = pairs;
        const int fromLine = kParts == 1 ? 0 : part == 0 ? -apart / 2 : apart / 2;
        for (int phase = 0; phase < linePhases; ++phase) {
            std::array<std::uint8_t, mostLineRows> line{};
            writeLine(profile, phase * (phases / linePhases) + fromLine, taps, 256, 255, line.data());
            for (int tap = 0; tap < taps; ++tap) {
                const std::uint8_t weight = line[static_cast<std::size_t>(tap)];
                weights[tap * linePhases + phase] = weight;
                for (int channel = 0; channel < 4; ++channel) {
                    pairs[(tap / 2 * linePhases + phase) * 8 + channel * 2 + tap % 2] = weight;
                }
            }
        }
    }
    return owned;
}

std::unique_ptr<const OwnedLineColumns> makeLineColumns(const WidthPair& widths, int taps) {
    auto owned = std::make_unique<OwnedLineColumns>();
    const SampledProfile profile(widths);
    owned->lines.resize(static_cast<std::size_t>(1 + phases * taps));
    std::int16_t* line = owned->lines.data() + 1;
    owned->table.lines = line;
    for (int phase = -phases / 2; phase < phases / 2; ++phase, line += taps) {
        writeLine(profile, phase, taps, 32768, 32767, line);
    }
    return owned;
}

/// All tables of one kind that are kept, by their steps and taps. Those that are there are found without a lock. There
/// is one shelf of each kind.
template <typename Owned> class TableShelf {
public:
    using Table = decltype(Owned::table);

    [[nodiscard]] static std::size_t placeOf(int wide, int narrow, int taps) {
        return (static_cast<std::size_t>(wide) * Owned::narrowBoxes + static_cast<std::size_t>(narrow)) * kinds +
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
    // Zeros of the program's own, of which a run touches some pages.
    static constinit inline std::array<std::atomic<const Table*>, std::size_t{widthSteps} * Owned::narrowBoxes * kinds>
        places_{};
    std::vector<std::pair<std::size_t, std::unique_ptr<const Owned>>> kept_;
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
            lineColumns_.forget();
            lineRows_.forget();
            lineHalves_.forget();
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
    const LineRows& lineRows(const WidthPair& widths, int taps, int parts) {
        return parts == 1 ? at(lineRows_, widths, taps, makeLineRows<OwnedLineRows, 1>)
                          : at(lineHalves_, widths, taps, makeLineRows<OwnedLineHalves, 2>);
    }
    const LineColumns& lineColumns(const WidthPair& widths) {
        return at(lineColumns_, widths, LineColumns::taps, makeLineColumns);
    }
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
                                                std::unique_ptr<const Owned> (*make)(const WidthPair&, int)) {
        const std::size_t place = TableShelf<Owned>::placeOf(widths.wide, widths.narrow, taps);
        if (const auto* table = shelf.found(place)) {
            return *table;
        }
        const std::scoped_lock lock(mutex_);
        if (const auto* table = shelf.found(place)) {
            return *table;
        }
        auto made = make(widths, taps);
        bytes_ += made->bytes();
        return shelf.keep(place, std::move(made));
    }

    static std::vector<std::uint8_t> linesOfAllRows(const ColumnTable& columns, int step) {
        std::vector<std::uint8_t> lines(std::size_t{2} * phases * 16);
        std::uint8_t* line = lines.data();
        for (int phase = -phasesBeyond; phase < phases + phasesBeyond; ++phase) {
            for (int row = 0; row < 4; ++row, line += 4) {
                const int ofRow = std::clamp(phase + row * step, -phasesBeyond, phases + phasesBeyond - 1);
                std::memcpy(line, columns.lines + std::ptrdiff_t{4} * ofRow, 4);
            }
        }
        return lines;
    }

    std::mutex mutex_;
    int users_ = 0;
    std::size_t bytes_ = 0;
    TableShelf<OwnedColumns> columns_;
    TableShelf<OwnedRows> rows_;
    TableShelf<OwnedLineColumns> lineColumns_;
    TableShelf<OwnedLineRows> lineRows_;
    TableShelf<OwnedLineHalves> lineHalves_;
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
    return Shelves::instance().rows(widths, evenTapsFor(widths));
}

const LineRows& lineRows(double boxWidth, int parts) {
    const WidthPair widths(std::min(boxWidth, widestLineRows), 0);
    return Shelves::instance().lineRows(widths, std::max(evenTapsFor(widths), 4), parts);
}

const LineColumns& lineColumns(double boxWidth) {
    return Shelves::instance().lineColumns(WidthPair(std::min(boxWidth, widestLineColumns), 0));
}

const std::uint8_t* steadyLines(const ColumnTable& columns, int step) {
    return Shelves::instance().steadyLines(columns, step);
}

} // namespace quillomat::raster
