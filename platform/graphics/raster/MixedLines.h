// Rows of a picture whose columns one thread has mixed already, as neighbouring canvas rows share them.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quillomat::raster {

/// As many rows as one canvas row takes. Of each, two stretches of columns are known: what lies to the left and to the
/// right of what hides it.
class MixedLines {
public:
    explicit MixedLines(const void* sampler) : sampler_(sampler) {}

    [[nodiscard]] bool isOf(const void* sampler) const { return sampler == sampler_; }
    void prepare(int rows, int columns) {
        if (lines_.empty()) {
            // Lines begin where the cache's do.
            columns_ = columns;
            stride_ = (static_cast<std::size_t>(columns) * 4 + lineOfCache - 1) / lineOfCache * lineOfCache;
            lines_.resize(static_cast<std::size_t>(rows));
            memory_ = std::make_unique_for_overwrite<std::uint8_t[]>(stride_ * lines_.size() + lineOfCache);
            const std::size_t misplaced = reinterpret_cast<std::uintptr_t>(memory_.get()) % lineOfCache;
            pixels_ = memory_.get() + (lineOfCache - misplaced) % lineOfCache;
        }
    }
    /// The columns [left, right) of a row; `mix(from, to, pixels)` is called for those that are not known.
    template <typename Mix> const std::uint8_t* columnsOf(int row, int left, int right, const Mix& mix) {
        const std::size_t place = static_cast<std::size_t>(row) % lines_.size();
        std::uint8_t* const pixels = pixels_ + place * stride_;
        Line& line = lines_[place];
        if (line.row != row) {
            line = {row, {}};
        }
        // What hides a row begins a little further on in the next one: some columns more than are asked for.
        const Stretch wanted{left / columnsMore * columnsMore,
                             std::min((right + columnsMore - 1) / columnsMore * columnsMore, columns_)};
        addTo(line, wanted, [&](int from, int to) { mix(from, to, pixels + static_cast<std::ptrdiff_t>(from) * 4); });
        return pixels + static_cast<std::ptrdiff_t>(left) * 4;
    }

private:
    static constexpr std::size_t lineOfCache = 64;
    static constexpr int columnsMore = 16;

    struct Stretch {
        int from = 0;
        int to = 0;

        [[nodiscard]] bool isEmpty() const { return from >= to; }
        [[nodiscard]] bool touches(const Stretch& other) const { return from <= other.to && other.from <= to; }
    };
    struct Line {
        int row = -1;
        std::array<Stretch, 2> known;
    };

    template <typename Mix> static void addTo(Line& line, const Stretch& wanted, const Mix& mix) {
        for (Stretch& known : line.known) {
            if (known.isEmpty()) {
                known = {wanted.from, wanted.from};
            }
            if (known.touches(wanted)) {
                if (wanted.from < known.from) {
                    mix(wanted.from, known.from);
                }
                if (wanted.to > known.to) {
                    mix(known.to, wanted.to);
                }
                known = {std::min(known.from, wanted.from), std::max(known.to, wanted.to)};
                return;
            }
        }
        line.known = {wanted, {}};
        mix(wanted.from, wanted.to);
    }

    const void* sampler_;
    int columns_ = 0;
    std::size_t stride_ = 0;
    std::unique_ptr<std::uint8_t[]> memory_;
    std::uint8_t* pixels_ = nullptr;
    std::vector<Line> lines_;
};

} // namespace quillomat::raster
