// Columns of a picture combined about a line, for the loops that filter pixels along it. Compiled once for each kind of
// processor, like those who include it.
#if defined(QUILLOMAT_RASTER_LINE_COLUMNS_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef QUILLOMAT_RASTER_LINE_COLUMNS_INL_H
#undef QUILLOMAT_RASTER_LINE_COLUMNS_INL_H
#else
#define QUILLOMAT_RASTER_LINE_COLUMNS_INL_H
#endif

#include "platform/graphics/raster/Kernels.h"
#include "platform/graphics/raster/Registers-inl.h"

#include <algorithm>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace quillomat::raster {
namespace HWY_NAMESPACE { // NOLINT: the library's own name for each kind of processor

#if HWY_TARGET != HWY_SCALAR

// The compiler takes a closure for a function that may stay one, which would pass registers through memory.
#define ALWAYS_INLINED __attribute__((always_inline))

// Where processors pick bytes out of two registers: a register's columns at once, else a block's.
#if HWY_TARGET == HWY_AVX3_DL
constexpr int groupColumns = 16;
#else
constexpr int groupColumns = 4;
#endif
// A segment's columns begin with an even one and come in groups.
constexpr int mostColumns =
    (longestSegment * mostLineStep + 2 * farthestAside) / phases + LineColumns::taps + 2 + groupColumns;

/// Of one part and one segment: sums of columns from an even one on, two columns' side by side, channel by channel.
struct ColumnSums {
    HWY_ALIGN std::int16_t numbers[mostColumns * 4];
};

/// Where columns lie on a line, in 1/65536 of a row, raised so that cutting rounds to phases.
HWY_INLINE std::int32_t positionOnLine(const PictureLine& line, int column) {
    return line.start + (column - line.column) * line.step + (1 << (lineBits - linePhaseBits - 1));
}

/// Whether a part weighs either tap of a pair.
constexpr bool isWeighed(int parts, int part, int taps, int pair) {
    return parts == 1 || (part == 0 ? 2 * pair <= taps / 2 : 2 * pair + 1 >= taps / 2 - 1);
}

/// The rows that groups of columns read, one beneath the other.
template <int kRows> class GroupRows {
public:
    HWY_INLINE GroupRows(const PixelView& picture, const FetchedAhead& ahead)
        : picture_(picture), wholeStride_(static_cast<std::ptrdiff_t>(picture.stride)), ahead_(ahead) {}

    [[nodiscard]] HWY_INLINE bool areInside(int firstColumn, int columns, int firstRow, int lastFirstRow) const {
        return firstColumn >= 0 && firstColumn + columns <= picture_.width && firstRow >= 0 &&
               lastFirstRow + kRows <= picture_.height;
    }
    HWY_INLINE void beginInside(int column, int row) {
        stride_ = wholeStride_;
        pixels_ = picture_.pixels + row * wholeStride_ + std::ptrdiff_t{4} * column;
        constexpr int columnsInCacheLine = 16;
        if (column % columnsInCacheLine >= groupColumns) {
            return;
        }
        // What lies below the picture is not fetched, and does no harm.
        auto below = reinterpret_cast<std::uintptr_t>(pixels_) +
                     static_cast<std::uintptr_t>(ahead_.firstRow) * static_cast<std::uintptr_t>(wholeStride_);
        for (int i = 0; i < ahead_.rows; ++i, below += static_cast<std::uintptr_t>(wholeStride_)) {
            __builtin_prefetch(reinterpret_cast<const void*>(below));
        }
    }
    /// What lies outside the picture becomes its nearest pixel.
    HWY_INLINE void begin(int column, int row) {
        if (areInside(column, groupColumns, row, row)) {
            beginInside(column, row);
        } else {
            copy(column, row);
        }
    }
    [[nodiscard]] HWY_INLINE const std::uint8_t* row(int i) const { return pixels_ + i * stride_; }

private:
    static constexpr std::ptrdiff_t copiedStride = std::ptrdiff_t{4} * groupColumns;

#if HWY_TARGET == HWY_AVX3_DL
    HWY_INLINE void copy(int column, int row) {
        const hn::FixedTag<std::int32_t, groupColumns> d;
        const int from = std::clamp(column, 0, std::max(picture_.width - groupColumns, 0));
        const auto there = static_cast<__mmask16>((1U << std::min(picture_.width, groupColumns)) - 1);
        const auto inside = hn::Min(hn::Max(hn::Iota(d, column), hn::Zero(d)), hn::Set(d, picture_.width - 1));
        const auto places = hn::Sub(inside, hn::Set(d, from));
        for (int i = 0; i < kRows; ++i) {
            const auto y = static_cast<std::ptrdiff_t>(std::clamp(row + i, 0, picture_.height - 1));
            const __m512i samples =
                _mm512_maskz_loadu_epi32(there, picture_.pixels + y * wholeStride_ + std::ptrdiff_t{4} * from);
            _mm512_store_si512(copied_ + i * copiedStride, _mm512_permutexvar_epi32(places.raw, samples));
        }
        stride_ = copiedStride;
        pixels_ = copied_;
    }
#else
    void copy(int column, int row) {
        for (int i = 0; i < kRows; ++i) {
            const auto y = static_cast<std::ptrdiff_t>(std::clamp(row + i, 0, picture_.height - 1));
            for (int k = 0; k < groupColumns; ++k) {
                const auto x = static_cast<std::ptrdiff_t>(std::clamp(column + k, 0, picture_.width - 1));
                std::memcpy(copied_ + i * copiedStride + std::ptrdiff_t{4} * k,
                            picture_.pixels + y * wholeStride_ + x * 4, 4);
            }
        }
        stride_ = copiedStride;
        pixels_ = copied_;
    }
#endif

    PixelView picture_;
    std::ptrdiff_t wholeStride_;
    FetchedAhead ahead_;
    std::ptrdiff_t stride_ = 0;
    const std::uint8_t* pixels_ = nullptr;
    alignas(64) std::uint8_t copied_[kRows * copiedStride];
};

/// The groups of a line, one after the other: where their columns lie, and their rows.
template <int kTaps, int kApart> class LineGroups {
public:
    HWY_INLINE LineGroups(const LineFootprint& footprint, const PictureLine& line, int first, int count)
        : rows_(footprint.picture, footprint.ahead)
        , step_(line.step)
        , toLowest_(std::min(line.step * (groupColumns - 1), 0))
        , toFirstRow_(line.row + 1 - kTaps / 2)
        , column_(first)
        , left_((count + groupColumns - 1) / groupColumns)
        , start_(positionOnLine(line, first)) {
        const auto [firstRow, lastRow] =
            std::minmax({lowest(), (start_ + (left_ - 1) * groupColumns * step_ + toLowest_) >> lineBits});
        areInside_ = rows_.areInside(first, left_ * groupColumns, toFirstRow_ + firstRow, toFirstRow_ + lastRow);
    }

    [[nodiscard]] HWY_INLINE bool areLeft() const { return left_ > 0; }
    HWY_INLINE void begin() {
        if (areInside_) {
            rows_.beginInside(column_, toFirstRow_ + lowest());
        } else {
            rows_.begin(column_, toFirstRow_ + lowest());
        }
    }
    HWY_INLINE void end() {
        --left_;
        column_ += groupColumns;
        start_ += groupColumns * step_;
    }
    /// Where the first column lies, in 1/65536 of a row, and the lowest whole row where one of them does.
    [[nodiscard]] HWY_INLINE std::int32_t start() const { return start_; }
    [[nodiscard]] HWY_INLINE std::int32_t lowest() const { return (start_ + toLowest_) >> lineBits; }
    /// The first taps of columns in that row, the ones below them, and so on.
    [[nodiscard]] HWY_INLINE const std::uint8_t* row(int i) const { return rows_.row(i); }

private:
    GroupRows<kTaps + kApart> rows_;
    std::int32_t step_;
    std::int32_t toLowest_;
    int toFirstRow_;
    int column_;
    int left_;
    std::int32_t start_;
    bool areInside_ = false;
};

#if HWY_TARGET == HWY_AVX3_DL

/// Which bytes make pairs of two rows' samples, and of two columns' sums: columns 0 to 7 of a group.
struct PairOrder {
    alignas(64) std::uint8_t samples[64];
    alignas(64) std::uint8_t columns[64]; // the lowest byte of the column's number of 32 bits
    alignas(64) std::uint8_t rows[64];    // of tables of two taps' weights

    constexpr PairOrder() : samples(), columns(), rows() {
        for (int i = 0; i < 64; ++i) {
            const int column = i / 16 * 2 + i / 2 % 2;
            const int channel = i % 16 / 4;
            const int row = i % 2;
            samples[i] = static_cast<std::uint8_t>(row * 64 + column * 4 + channel);
            columns[i] = static_cast<std::uint8_t>(column * 4);
            rows[i] = static_cast<std::uint8_t>(row * linePhases);
        }
    }
};
constexpr PairOrder pairOrder;

/// Sums of columns from an even one on, in whole groups, of a line whose groups lie in up to `kApart` rows more than
/// one.
template <int kParts, int kTaps, int kApart>
HWY_INLINE void combineGroups(const LineFootprint& footprint, const PictureLine& line, int first, int count,
                              ColumnSums* sums) {
    const hn::FixedTag<std::uint8_t, 64> d8;
    const hn::FixedTag<std::int16_t, 32> d16;
    const hn::FixedTag<std::int32_t, 16> d32;
    using Bytes = hn::Vec<decltype(d8)>;
    const auto picked = [](Bytes order, Bytes a, Bytes b)
                            ALWAYS_INLINED { return Bytes{_mm512_permutex2var_epi8(a.raw, order.raw, b.raw)}; };
    Bytes samplesOrder[2];
    Bytes columnsOrder[2];
    for (int half = 0; half < 2; ++half) {
        const auto from = hn::Set(d8, static_cast<std::uint8_t>(32 * half));
        samplesOrder[half] = hn::Add(hn::Load(d8, pairOrder.samples), from);
        columnsOrder[half] = hn::Add(hn::Load(d8, pairOrder.columns), from);
    }
    Bytes weights[kParts][kTaps];
    for (int part = 0; part < kParts; ++part) {
        for (int tap = 0; tap < kTaps; ++tap) {
            weights[part][tap] = hn::Load(d8, footprint.rows->weights[part] + tap * linePhases);
        }
    }
    const auto steps = hn::Mul(hn::Iota(d32, 0), hn::Set(d32, line.step));
    std::int16_t* outs[kParts];
    for (int part = 0; part < kParts; ++part) {
        outs[part] = sums[part].numbers;
    }
    LineGroups<kTaps, kApart> groups(footprint, line, first, count);
    for (; groups.areLeft(); groups.end()) {
        groups.begin();
        const auto at = hn::Add(steps, hn::Set(d32, groups.start()));
        const auto down = hn::ShiftRight<lineBits>(at);
        const auto farther = hn::Sub(down, hn::Set(d32, groups.lowest()));
        const auto phase =
            hn::BitCast(d8, hn::And(hn::ShiftRight<lineBits - linePhaseBits>(at), hn::Set(d32, linePhases - 1)));
        Bytes places[2]; // of weights in their tables
        for (int half = 0; half < 2; ++half) {
            places[half] =
                hn::Or(Bytes{_mm512_permutexvar_epi8(columnsOrder[half].raw, phase.raw)}, hn::Load(d8, pairOrder.rows));
        }
        hn::Vec<decltype(d16)> sum[kParts][2];
        for (int part = 0; part < kParts; ++part) {
            sum[part][0] = sum[part][1] = hn::Zero(d16);
        }
        Bytes row[kTaps + kApart];
#pragma GCC unroll 32
        for (int k = 0; k < kTaps + kApart; ++k) {
            row[k] = hn::LoadU(d8, groups.row(k));
        }
        // Each column's rows move up by as many as its first one is farther down: by eight, four, two, and one.
#pragma GCC unroll 4
        for (int step = 8; step > 0; step /= 2) {
            if (step <= kApart) {
                const __mmask16 moves = _mm512_test_epi32_mask(farther.raw, _mm512_set1_epi32(step));
#pragma GCC unroll 32
                for (int k = 0; k < kTaps + step - 1 && k + step < kTaps + kApart; ++k) {
                    row[k].raw = _mm512_mask_blend_epi32(moves, row[k].raw, row[k + step].raw);
                }
            }
        }
        const auto samplesOf = [&](int tap)
                                   ALWAYS_INLINED { return hn::Xor(row[tap], hn::Set(d8, std::uint8_t{0x80})); };
#pragma GCC unroll 4
        for (int pair = 0; pair < kTaps / 2; ++pair) {
            const Bytes a = samplesOf(2 * pair);
            const Bytes b = samplesOf(2 * pair + 1);
#pragma GCC unroll 2
            for (int half = 0; half < 2; ++half) {
                const Bytes samples = picked(samplesOrder[half], a, b);
#pragma GCC unroll 2
                for (int part = 0; part < kParts; ++part) {
                    if (isWeighed(kParts, part, kTaps, pair)) {
                        const Bytes weight = picked(places[half], weights[part][2 * pair], weights[part][2 * pair + 1]);
                        sum[part][half] = hn::Add(sum[part][half], addedProducts(d16, weight, samples));
                    }
                }
            }
        }
        for (int part = 0; part < kParts; ++part) {
            hn::Store(sum[part][0], d16, outs[part]);
            hn::Store(sum[part][1], d16, outs[part] + 32);
            outs[part] += 4 * groupColumns;
        }
    }
}

#else

/// Sums of columns from an even one on, in whole groups, of a line whose groups lie in up to `kApart` rows more than
/// one.
template <int kParts, int kTaps, int kApart>
HWY_INLINE void combineGroups(const LineFootprint& footprint, const PictureLine& line, int first, int count,
                              ColumnSums* sums) {
    const Bytes16 d8;
    const hn::Half<Bytes16> dHalf;
    const Shorts8 d16;
    const Longs4 d32;
    const auto steps = hn::Mul(hn::Iota(d32, 0), hn::Set(d32, line.step));
    std::ptrdiff_t out = 0;
    LineGroups<kTaps, kApart> groups(footprint, line, first, count);
    for (; groups.areLeft(); groups.end(), out += std::ptrdiff_t{4} * groupColumns) {
        groups.begin();
        const auto down = hn::ShiftRight<lineBits>(hn::Add(steps, hn::Set(d32, groups.start())));
        std::ptrdiff_t ofPhase[groupColumns];
        for (int column = 0; column < groupColumns; ++column) {
            const std::int32_t at = groups.start() + column * line.step;
            ofPhase[column] = (at >> (lineBits - linePhaseBits) & (linePhases - 1)) * std::ptrdiff_t{8};
        }
        const auto samplesOf = [&](int tap) ALWAYS_INLINED {
            auto samples = hn::BitCast(d32, hn::LoadU(d8, groups.row(tap)));
#pragma GCC unroll 2
            for (int apart = 1; apart <= kApart; ++apart) {
                samples = hn::IfThenElse(hn::Eq(down, hn::Set(d32, groups.lowest() + apart)),
                                         hn::BitCast(d32, hn::LoadU(d8, groups.row(tap + apart))), samples);
            }
            return hn::Xor(hn::BitCast(d8, samples), hn::Set(d8, std::uint8_t{0x80}));
        };
        hn::Vec<Shorts8> sum[kParts][2];
        for (int part = 0; part < kParts; ++part) {
            sum[part][0] = sum[part][1] = hn::Zero(d16);
        }
#pragma GCC unroll 4
        for (int pair = 0; pair < kTaps / 2; ++pair) {
            const auto a = samplesOf(2 * pair);
            const auto b = samplesOf(2 * pair + 1);
            const auto low = hn::InterleaveLower(d8, a, b);
            const auto high = hn::InterleaveUpper(d8, a, b);
#pragma GCC unroll 2
            for (int part = 0; part < kParts; ++part) {
                if (isWeighed(kParts, part, kTaps, pair)) {
                    const std::uint8_t* const weights =
                        footprint.rows->pairs[part] + static_cast<std::ptrdiff_t>(pair) * linePhases * 8;
                    const auto ofTwo = [&](int column) ALWAYS_INLINED {
                        return hn::Combine(d8, hn::LoadU(dHalf, weights + ofPhase[column + 1]),
                                           hn::LoadU(dHalf, weights + ofPhase[column]));
                    };
                    sum[part][0] = hn::Add(sum[part][0], addedProducts(d16, ofTwo(0), low));
                    sum[part][1] = hn::Add(sum[part][1], addedProducts(d16, ofTwo(2), high));
                }
            }
        }
        const auto inPairs = [&](hn::Vec<Shorts8> two) ALWAYS_INLINED {
            return hn::InterleaveLower(d16, two, hn::ConcatUpperUpper(d16, two, two));
        };
        for (int part = 0; part < kParts; ++part) {
            hn::Store(inPairs(sum[part][0]), d16, sums[part].numbers + out);
            hn::Store(inPairs(sum[part][1]), d16, sums[part].numbers + out + 8);
        }
    }
}

#endif

template <int kParts, int kTaps>
HWY_INLINE void combineByApart(const LineFootprint& footprint, const PictureLine& line, int first, int count,
                               ColumnSums* sums) {
    const int rise = std::abs(line.step) * (groupColumns - 1);
    if (rise <= 1 << lineBits) {
        return combineGroups<kParts, kTaps, 1>(footprint, line, first, count, sums);
    }
#if HWY_TARGET == HWY_AVX3_DL
    if (rise <= 3 << lineBits) {
        return combineGroups<kParts, kTaps, 3>(footprint, line, first, count, sums);
    }
    if (rise <= 5 << lineBits) {
        return combineGroups<kParts, kTaps, 5>(footprint, line, first, count, sums);
    }
    if (rise <= 7 << lineBits) {
        return combineGroups<kParts, kTaps, 7>(footprint, line, first, count, sums);
    }
    combineGroups<kParts, kTaps, 9>(footprint, line, first, count, sums);
#else
    combineGroups<kParts, kTaps, 2>(footprint, line, first, count, sums);
#endif
}

template <int kParts>
HWY_INLINE void combineColumns(const LineFootprint& footprint, const PictureLine& line, int first, int count,
                               ColumnSums* sums) {
    switch (footprint.rows->taps) {
    case 4:
        return combineByApart<kParts, 4>(footprint, line, first, count, sums);
    case 6:
        return combineByApart<kParts, 6>(footprint, line, first, count, sums);
    default:
        return combineByApart<kParts, 8>(footprint, line, first, count, sums);
    }
}

#undef ALWAYS_INLINED

#endif

} // namespace HWY_NAMESPACE
} // namespace quillomat::raster
HWY_AFTER_NAMESPACE();

#endif
