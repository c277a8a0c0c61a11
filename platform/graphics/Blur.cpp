#include "platform/graphics/Blur.h"

#include "platform/foundation/Trace.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillomat {

namespace {

// Beyond this every picture that fits the limits has become one colour.
constexpr double largestDeviation = 1000;

/// Weights of the taps 0, 1, 2 ... on one side; twice the rest plus the first make 1.
std::vector<float> gaussianWeights(double deviation) {
    const int reach = std::max(1, static_cast<int>(std::ceil(deviation * 4.5)));
    std::vector<double> weights(static_cast<std::size_t>(reach) + 1);
    double sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const double t = static_cast<double>(i) / deviation;
        weights[i] = std::exp(-t * t / 2);
        sum += i == 0 ? weights[i] : 2 * weights[i];
    }
    std::vector<float> normalised;
    std::transform(weights.begin(), weights.end(), std::back_inserter(normalised),
                   [sum](double weight) { return static_cast<float>(weight / sum); });
    return normalised;
}

/// Columns first: out = weighted sum of whole rows, which runs along memory.
void blurColumns(const Bitmap& source, int y, const std::vector<float>& weights, std::vector<float>& out) {
    const auto last = source.height() - 1;
    std::fill(out.begin(), out.end(), 0.0F);
    const int reach = static_cast<int>(weights.size()) - 1;
    for (int offset = -reach; offset <= reach; ++offset) {
        const std::uint8_t* row = source.row(std::clamp(y + offset, 0, last));
        const float weight = weights[static_cast<std::size_t>(std::abs(offset))];
        for (std::size_t i = 0; i < out.size(); ++i) {
            out[i] += weight * static_cast<float>(row[i]);
        }
    }
}

/// One row, extended by its end pixels on both sides so that the inner loop needs no tests.
void blurRow(const std::vector<float>& row, const std::vector<float>& weights, std::vector<float>& extended,
             std::vector<float>& sums, std::uint8_t* out) {
    const std::size_t reach = weights.size() - 1;
    for (std::size_t i = 0; i < reach; ++i) {
        std::copy_n(row.begin(), 4, extended.begin() + static_cast<std::ptrdiff_t>(i * 4));
        std::copy_n(row.end() - 4, 4, extended.end() - static_cast<std::ptrdiff_t>((i + 1) * 4));
    }
    std::copy(row.begin(), row.end(), extended.begin() + static_cast<std::ptrdiff_t>(reach * 4));
    std::fill(sums.begin(), sums.end(), 0.0F);
    for (std::size_t tap = 0; tap <= 2 * reach; ++tap) {
        const float weight = weights[tap < reach ? reach - tap : tap - reach];
        const float* from = extended.data() + tap * 4;
        for (std::size_t i = 0; i < sums.size(); ++i) {
            sums[i] += weight * from[i];
        }
    }
    for (std::size_t i = 0; i < sums.size(); ++i) {
        out[i] = static_cast<std::uint8_t>(std::clamp(sums[i] + 0.5F, 0.0F, 255.0F));
    }
}

} // namespace

Image gaussianBlurClamped(const Image& image, double radius) {
    if (!image || !(radius > 0)) {
        return image;
    }
    const SharedBitmap source = image.bitmap();
    if (!source || source->size().isEmpty()) {
        return {};
    }
    const trace::Span span("blur");
    const std::vector<float> weights = gaussianWeights(std::min(radius, largestDeviation));
    const std::size_t width = static_cast<std::size_t>(source->width()) * 4;
    std::vector<float> row(width);
    std::vector<float> sums(width);
    std::vector<float> extended(width + (weights.size() - 1) * 8);
    Bitmap blurred(source->size());
    for (int y = 0; y < source->height(); ++y) {
        blurColumns(*source, y, weights, row);
        blurRow(row, weights, extended, sums, blurred.row(y));
    }
    return Image::fromBitmap(std::move(blurred));
}

} // namespace quillomat
