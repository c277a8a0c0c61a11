// From a picture's own colours to sRGB, on straight 8-bit pixels.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace quillomat::codecs {

/// What the four bytes of a pixel mean before the conversion: grey as R = G = B with alpha, RGB with alpha, four inks
/// (0 is no ink), or four inks as one maker's programs store them (255 is no ink).
enum class ColorModel { gray, rgb, cmyk, invertedCmyk };

struct Chromaticities {
    double whiteX = 0.3127, whiteY = 0.3290;
    double redX = 0.64, redY = 0.33;
    double greenX = 0.30, greenY = 0.60;
    double blueX = 0.15, blueY = 0.06;
};

/// Immutable and safe to share between threads. The default converts nothing.
class ColorConversion {
public:
    ColorConversion() = default;
    /// Converts nothing when the profile cannot be read, is meant for another model than the picture's, or is sRGB in
    /// all but name.
    [[nodiscard]] static ColorConversion fromProfile(std::span<const std::byte> profile, ColorModel model);
    /// Colours whose linear light is the value to the power `exponent` (such as 2.2); the curve of sRGB where there is
    /// none.
    [[nodiscard]] static ColorConversion fromPrimaries(std::optional<double> exponent, const Chromaticities& primaries,
                                                       ColorModel model);

    [[nodiscard]] bool isIdentity() const { return !convert_; }
    /// In place, straight RGBA to straight RGBA; from inks, the result is opaque.
    void convert(std::uint8_t* pixels, std::size_t count) const;

    /// How the pixels are changed: one implementation for each way of getting there.
    class Step;

private:
    explicit ColorConversion(std::shared_ptr<const Step> step) : convert_(std::move(step)) {}
    [[nodiscard]] static ColorConversion unlessIdentity(std::shared_ptr<const Step> step, ColorModel model);
    std::shared_ptr<const Step> convert_;
};

/// Inks to RGB where no profile says how: the inks multiply.
void convertInksWithoutProfile(std::uint8_t* pixels, std::size_t count, bool inverted);

} // namespace quillomat::codecs
