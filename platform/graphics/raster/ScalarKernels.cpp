#include "platform/graphics/raster/Kernels.h"

#include <algorithm>
#include <bit>

namespace quillomat::raster {

namespace {

std::int32_t positionOf(double numerator, double inverse, double highest) {
    const double at = numerator * inverse;
    const double bounded = at > lowestPosition ? (at < highest ? at : highest) : lowestPosition;
    // Not negative before it is cut to a whole number, which therefore rounds to the nearest.
    return static_cast<std::int32_t>(bounded - lowestPosition + 0.5) + static_cast<std::int32_t>(lowestPosition);
}

void projectPositions(const ProjectedRow& row, int left, int count, std::int32_t* u, std::int32_t* v) {
    for (int i = 0; i < count; ++i) {
        const double x = left + 0.5 + i;
        const double inverse = 1.0 / (x * row.wStep + row.w0);
        u[i] = positionOf(x * row.uStep + row.u0, inverse, row.highestU);
        v[i] = positionOf(x * row.vStep + row.v0, inverse, row.highestV);
    }
}

std::int32_t positionAlong(const CurvedRow::Axis& axis, int i) {
    const auto at = static_cast<float>(i);
    const float bent = axis.bend * at;
    const float along = (bent + axis.step) * at;
    const float rounded = (along + axis.start) + roundingFloat;
    return std::bit_cast<std::int32_t>(rounded) - bitsOfRoundingFloat + axis.origin;
}

std::int32_t positionAlong(const LineCurve& curve, int i) {
    const auto at = static_cast<float>(i);
    const float moved = at * curve.step / (1 + at * curve.fall);
    const float rounded = (curve.start + moved) + roundingFloat;
    return std::bit_cast<std::int32_t>(rounded) - bitsOfRoundingFloat + curve.origin;
}

/// Where a footprint's rows begin, and at which phases.
struct RowsOfColumns {
    int firstColumn[mostTaps] = {};
    int phase[mostTaps] = {};
};

RowsOfColumns rowsOfColumns(const Footprint& footprint, std::int32_t u, int phaseV) {
    RowsOfColumns result;
    const int rowTaps = footprint.rows->taps;
    const int toFirstTap = 1 - footprint.columns->taps / 2;
    const int fromMiddle = (1 - rowTaps / 2) * phases - phaseV;
    const int steadyStep = footprint.shear / steadyShear;
    const int first = u + ((footprint.shear * fromMiddle + shearOne / 2) >> 15);
    const int steadyColumn = (first + ((rowTaps - 1) * steadyStep >> 1)) >> phaseBits;
    for (int row = 0; row < rowTaps; ++row) {
        const int position = u + ((footprint.shear * (fromMiddle + row * phases) + shearOne / 2) >> 15);
        const int column = footprint.isSteady ? steadyColumn : position >> phaseBits;
        result.firstColumn[row] = column + toFirstTap;
        result.phase[row] = position - column * phases;
    }
    return result;
}

/// Four sums.
void sumOnePosition(const Footprint& footprint, std::int32_t u, std::int32_t v, std::int32_t* sums) {
    const PixelView& picture = footprint.picture;
    const int columnTaps = footprint.columns->taps;
    const int rowTaps = footprint.rows->taps;
    const int phaseV = v & (phases - 1);
    const int firstRow = (v >> phaseBits) - rowTaps / 2 + 1;
    const RowsOfColumns columns = rowsOfColumns(footprint, u, phaseV);
    std::fill_n(sums, 4, 0);
    for (int row = 0; row < rowTaps; ++row) {
        const auto y = static_cast<std::size_t>(std::clamp(firstRow + row, 0, picture.height - 1));
        const std::uint8_t* pixels = picture.pixels + y * picture.stride;
        int inRow[4] = {};
        for (int tap = 0; tap < columnTaps; ++tap) {
            const auto x = static_cast<std::size_t>(std::clamp(columns.firstColumn[row] + tap, 0, picture.width - 1));
            const int weight = footprint.columns->weight(columns.phase[row], tap);
            for (std::size_t channel = 0; channel < 4; ++channel) {
                inRow[channel] += (pixels[x * 4 + channel] - 128) * weight;
            }
        }
        for (int channel = 0; channel < 4; ++channel) {
            sums[channel] += inRow[channel] * footprint.rows->weight(phaseV, row);
        }
    }
}

void roundSums(const std::int32_t* sums, std::uint8_t* out) {
    for (int channel = 0; channel < 4; ++channel) {
        out[channel] = static_cast<std::uint8_t>(static_cast<std::uint32_t>(sums[channel] + sumOfHalf) >> sumBits);
    }
}

void filterOnePixel(const Footprint& footprint, std::int32_t u, std::int32_t v, std::uint8_t* out) {
    std::int32_t sums[4];
    sumOnePosition(footprint, u, v, sums);
    roundSums(sums, out);
}

void filterFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                     std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        filterOnePixel(footprint, u[i], v[i], out + static_cast<std::size_t>(i) * 4);
    }
}

void filterAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        filterOnePixel(footprint, positionAlong(row.u, first + i), positionAlong(row.v, first + i),
                       out + static_cast<std::size_t>(i) * 4);
    }
}

void sumFootprint(const Footprint& footprint, const std::int32_t* u, const std::int32_t* v, int count,
                  std::int32_t* sums) {
    for (int i = 0; i < count; ++i) {
        sumOnePosition(footprint, u[i], v[i], sums + static_cast<std::size_t>(i) * 4);
    }
}

void sumAlongCurve(const Footprint& footprint, const CurvedRow& row, int first, int count, std::int32_t* sums) {
    for (int i = 0; i < count; ++i) {
        sumOnePosition(footprint, positionAlong(row.u, first + i), positionAlong(row.v, first + i),
                       sums + static_cast<std::size_t>(i) * 4);
    }
}

/// Four sums of a column's weighted samples less 128 each, about where the line crosses it.
void sumColumn(const LineFootprint& footprint, int part, const PictureLine& line, int column, std::int32_t* sums) {
    const PixelView& picture = footprint.picture;
    const std::int32_t at = line.start + (column - line.column) * line.step + (1 << (lineBits - linePhaseBits - 1));
    const int phase = (at >> (lineBits - linePhaseBits)) & (linePhases - 1);
    const int firstRow = line.row + (at >> lineBits) + 1 - footprint.rows->taps / 2;
    const auto x = static_cast<std::size_t>(std::clamp(column, 0, picture.width - 1));
    std::fill_n(sums, 4, 0);
    for (int tap = 0; tap < footprint.rows->taps; ++tap) {
        const auto y = static_cast<std::size_t>(std::clamp(firstRow + tap, 0, picture.height - 1));
        const std::uint8_t* pixel = picture.pixels + y * picture.stride + x * 4;
        for (int channel = 0; channel < 4; ++channel) {
            sums[channel] += (pixel[channel] - 128) * footprint.rows->weight(part, phase, tap);
        }
    }
}

void filterAlongLine(const LineFootprint& footprint, const PictureLine& line, const LineCurve& curve, int first,
                     int count, std::uint8_t* out) {
    const int bits = lineSumBits(footprint.parts);
    for (int i = 0; i < count; ++i, out += 4) {
        const LineFootprint::Columns& columns = footprint.columnsOf(first + i);
        std::uint32_t pixel[4] = {};
        for (int part = 0; part < footprint.parts; ++part) {
            const int side = footprint.parts == 1 ? 0 : 2 * part - 1;
            const std::int32_t u = positionAlong(curve, first + i) + side * columns.aside;
            const int nearest = (u + phases / 2) >> phaseBits;
            for (int tap = 0; tap < LineColumns::taps; ++tap) {
                std::int32_t sums[4];
                sumColumn(footprint, part, line, nearest - 3 + tap, sums);
                const int weight = columns.table->weight(u - nearest * phases, tap);
                for (int channel = 0; channel < 4; ++channel) {
                    pixel[channel] += static_cast<std::uint32_t>(sums[channel] * weight);
                }
            }
        }
        for (int channel = 0; channel < 4; ++channel) {
            out[channel] = static_cast<std::uint8_t>((pixel[channel] + halfOfLineSum(footprint.parts)) >> bits);
        }
    }
}

void averageParts(const std::int32_t* sums, PixelParts parts, int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        std::int32_t whole[4] = {};
        for (int down = 0; down < parts.down; ++down) {
            const std::int32_t* part = sums + std::ptrdiff_t{4} * parts.across * (down * count + i);
            for (int at = 0; at < 4 * parts.across; ++at) {
                whole[at % 4] += part[at] >> parts.shift();
            }
        }
        roundSums(whole, out + std::ptrdiff_t{4} * i);
    }
}

void combineRows(const std::uint8_t* const* rows, const std::int16_t* weights, int taps, int count, std::int16_t* out) {
    for (int i = 0; i < count; ++i) {
        int sum = 0;
        for (int tap = 0; tap < taps; ++tap) {
            sum += rows[tap][i] * weights[tap];
        }
        out[i] = static_cast<std::int16_t>((sum + 128) >> 8);
    }
}

void combineColumns(const std::int16_t* row, const std::int32_t* first, const std::int16_t* weights, int taps,
                    int count, std::uint8_t* out) {
    for (int i = 0; i < count; ++i) {
        const std::int16_t* pixels = row + static_cast<std::ptrdiff_t>(first[i]) * 4;
        const std::int16_t* line = weights + static_cast<std::ptrdiff_t>(i) * taps;
        int sums[4] = {};
        for (int tap = 0; tap < taps; ++tap) {
            for (int channel = 0; channel < 4; ++channel) {
                sums[channel] += pixels[tap * 4 + channel] * line[tap];
            }
        }
        const int alpha = std::clamp((sums[3] + (1 << 19)) >> 20, 0, 255);
        for (int channel = 0; channel < 3; ++channel) {
            out[channel] = static_cast<std::uint8_t>(std::clamp((sums[channel] + (1 << 19)) >> 20, 0, alpha));
        }
        out[3] = static_cast<std::uint8_t>(alpha);
        out += 4;
    }
}

/// A sum of weights' products as a byte.
std::uint8_t meanOf(int sum) {
    return static_cast<std::uint8_t>(std::clamp(((sum + mixedWhole / 2) * mixedInverse) >> 16, 0, 255));
}

void cutToAlpha(std::uint8_t* pixel) {
    for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = std::min(pixel[channel], pixel[3]);
    }
}

void mixRows(const std::uint8_t* const* rows, const std::int8_t* weights, int taps, int count, std::uint8_t* out) {
    for (std::ptrdiff_t i = 0; i < std::ptrdiff_t{count} * 4; i += 4) {
        for (std::ptrdiff_t at = i; at < i + 4; ++at) {
            int sum = 0;
            for (int tap = 0; tap < taps; ++tap) {
                sum += rows[tap][at] * weights[tap];
            }
            out[at] = meanOf(sum);
        }
        cutToAlpha(out + i);
    }
}

void mixColumns(const MixedColumns& columns, const MixedRow& row, int from, int count, bool isCut, std::uint8_t* out) {
    const int taps = columns.taps;
    for (int i = from; i < from + count; ++i, out += 4) {
        const std::uint8_t* pixels = row.pixels + static_cast<std::ptrdiff_t>(columns.first[i]) * 4;
        const std::int8_t* weights = columns.weights + static_cast<std::ptrdiff_t>(i) * taps * 4;
        for (int channel = 0; channel < 4; ++channel) {
            int sum = 0;
            for (int tap = 0; tap < taps; ++tap) {
                sum += pixels[tap * 4 + channel] * weights[tap / 2 * 8 + tap % 2];
            }
            out[channel] = meanOf(sum);
        }
        if (isCut) {
            cutToAlpha(out);
        }
    }
}

void mixPlaneRows(const PlaneRows& rows, int from, int to, std::uint8_t* out) {
    for (int i = from; i < to; ++i) {
        int sum = 0;
        for (int tap = 0; tap < rows.taps; ++tap) {
            sum += rows.rows[tap][i] * rows.weights[tap];
        }
        out[i] = meanOf(sum);
    }
}

/// One column of a plane, as the sum of its weights' products.
int sumOfColumn(const PlaneColumns& columns, const std::uint8_t* row, int column) {
    const std::uint8_t* samples = row + columns.first[column];
    const std::int8_t* weights = columns.weights + static_cast<std::ptrdiff_t>(column) * columns.taps;
    int sum = 0;
    for (int tap = 0; tap < columns.taps; ++tap) {
        sum += samples[tap] * weights[tap];
    }
    return sum;
}

std::uint8_t colorOf(int sum) {
    return static_cast<std::uint8_t>(std::clamp((sum + (1 << (planar::colorBits - 1))) >> planar::colorBits, 0, 255));
}

void mixPlaneColumns(const PlaneColumns& luma, const PlaneColumns& chroma, const PlanarRow& row, int from, int count,
                     std::uint8_t* out) {
    for (int i = from; i < from + count; ++i, out += 4) {
        const int gray = sumOfColumn(luma, row.luma, i) * planar::luma;
        const int blue = sumOfColumn(chroma, row.blueChroma, i) - planar::noChroma;
        const int red = sumOfColumn(chroma, row.redChroma, i) - planar::noChroma;
        out[0] = colorOf(gray + red * planar::redOfRed);
        out[1] = colorOf(gray + blue * planar::greenOfBlue + red * planar::greenOfRed);
        out[2] = colorOf(gray + blue * planar::blueOfBlue);
        out[3] = 255;
    }
}

/// pixels x coverage + canvas x (1 - alpha x coverage), with one rounding; colours above their alpha saturate.
void compositePixel(std::uint8_t* canvas, const std::uint8_t* pixel, std::uint32_t coverage) {
    const std::uint32_t rest = 255 - dividedBy255(pixel[3] * coverage);
    for (int channel = 0; channel < 4; ++channel) {
        const std::uint32_t sum = pixel[channel] * coverage + canvas[channel] * rest;
        canvas[channel] = static_cast<std::uint8_t>(std::min(dividedBy255(std::min(sum, 65152U)), 255U));
    }
}

void compositeCovered(std::uint8_t* canvas, const std::uint8_t* pixels, const std::uint8_t* coverage, int count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        compositePixel(canvas + i * 4, pixels + i * 4, coverage[i]);
    }
}

void compositeUniform(std::uint8_t* canvas, const std::uint8_t* pixels, int coverage, int count) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        compositePixel(canvas + i * 4, pixels + i * 4, static_cast<std::uint32_t>(coverage));
    }
}

} // namespace

const Kernels& scalarKernels() {
    static constexpr Kernels kernels{"scalar",     projectPositions, filterFootprint,  filterAlongCurve,
                                     sumFootprint, sumAlongCurve,    filterAlongLine,  averageParts,
                                     combineRows,  combineColumns,   mixRows,          mixColumns,
                                     mixPlaneRows, mixPlaneColumns,  compositeCovered, compositeUniform};
    return kernels;
}

} // namespace quillomat::raster
