#include "platform/graphics/codecs/ColorConversion.h"

#include "platform/graphics/codecs/MatrixConversion.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace quillomat::codecs {

class ColorConversion::Step {
public:
    virtual ~Step() = default;
    virtual void convert(std::uint8_t* pixels, std::size_t count) const = 0;
};

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

// Shared, because profiles and transforms must be closed before the context they were made in.
using Context = std::shared_ptr<std::remove_pointer_t<cmsContext>>;
using Profile = std::unique_ptr<void, CloseProfile>;
using Transform = std::unique_ptr<void, DeleteTransform>;
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

// An embedded profile above this is no profile for a picture (press profiles reach a few megabytes).
constexpr std::size_t largestProfile = std::size_t{16} << 20;
// Rounding in the eight-bit paths: profiles this near to sRGB are sRGB in all but name.
constexpr int sameColor = 1;

/// lcms2 on every pixel. Made without its cache, which is what makes it safe to share between threads.
class TransformStep final : public ColorConversion::Step {
public:
    TransformStep(Context context, Transform transform, bool fromInks)
        : context_(std::move(context)), transform_(std::move(transform)), fromInks_(fromInks) {}

    void convert(std::uint8_t* pixels, std::size_t count) const override {
        constexpr std::size_t batch = 1 << 16;
        for (std::size_t done = 0; done < count; done += batch) {
            const std::size_t now = std::min(batch, count - done);
            std::uint8_t* at = pixels + done * 4;
            cmsDoTransform(transform_.get(), at, at, static_cast<cmsUInt32Number>(now));
            if (fromInks_) {
                for (std::size_t i = 0; i < now; ++i) {
                    at[i * 4 + 3] = 255;
                }
            }
        }
    }

private:
    Context context_;
    Transform transform_;
    bool fromInks_;
};

class MatrixStep final : public ColorConversion::Step {
public:
    explicit MatrixStep(const MatrixColors& colors) : conversion_(colors) {}
    void convert(std::uint8_t* pixels, std::size_t count) const override { conversion_.convert(pixels, count); }

private:
    MatrixConversion conversion_;
};

/// Grey has only 256 values.
class GrayStep final : public ColorConversion::Step {
public:
    using Table = std::array<std::array<std::uint8_t, 3>, 256>;
    explicit GrayStep(const Table& table) : table_(table) {}

    void convert(std::uint8_t* pixels, std::size_t count) const override {
        for (std::uint8_t* end = pixels + count * 4; pixels != end; pixels += 4) {
            std::copy_n(table_[pixels[0]].begin(), 3, pixels);
        }
    }

private:
    Table table_;
};

Context makeContext() {
    const Context context(cmsCreateContext(nullptr, nullptr), [](cmsContext made) {
        if (made != nullptr) {
            cmsDeleteContext(made);
        }
    });
    if (context) {
        cmsSetLogErrorHandlerTHR(context.get(), [](cmsContext, cmsUInt32Number, const char*) {});
    }
    return context;
}

bool isProfileFor(cmsHPROFILE profile, ColorModel model) {
    // A number of the file's, which need not be any of the enumeration's.
    const auto space = static_cast<std::uint32_t>(cmsGetColorSpace(profile));
    switch (model) {
    case ColorModel::gray:
        return space == cmsSigGrayData;
    case ColorModel::rgb:
        return space == cmsSigRgbData;
    case ColorModel::cmyk:
    case ColorModel::invertedCmyk:
        return space == cmsSigCmykData;
    }
    return false;
}

cmsUInt32Number pixelFormat(ColorModel model) {
    switch (model) {
    case ColorModel::gray:
        return TYPE_GRAY_8;
    case ColorModel::rgb:
        return TYPE_RGBA_8;
    case ColorModel::cmyk:
        return TYPE_CMYK_8;
    case ColorModel::invertedCmyk:
        return TYPE_CMYK_8_REV;
    }
    return 0;
}

using Matrix = std::array<std::array<double, 3>, 3>;

/// The profile's primaries as the columns of a matrix to its connection space.
std::optional<Matrix> primariesOf(cmsHPROFILE profile) {
    Matrix matrix{};
    constexpr std::array<cmsTagSignature, 3> tags{cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto* color = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[i]));
        if (color == nullptr) {
            return std::nullopt;
        }
        matrix[0][i] = color->X;
        matrix[1][i] = color->Y;
        matrix[2][i] = color->Z;
    }
    return matrix;
}

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[row][column] = a[row][0] * b[0][column] + a[row][1] * b[1][column] + a[row][2] * b[2][column];
        }
    }
    return result;
}

std::optional<Matrix> inverse(const Matrix& m) {
    const auto minorOf = [&m](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3;
        const std::size_t r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3;
        const std::size_t c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * minorOf(0, 0) + m[0][1] * minorOf(0, 1) + m[0][2] * minorOf(0, 2);
    if (!(std::abs(determinant) > 1e-9)) {
        return std::nullopt;
    }
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result[row][column] = minorOf(column, row) / determinant;
        }
    }
    return result;
}

/// What curves and a matrix say of the profile; nothing for one that goes by tables.
std::optional<MatrixColors> matrixColorsOf(cmsHPROFILE from, cmsHPROFILE srgb) {
    if (!cmsIsMatrixShaper(from) || cmsIsTag(from, cmsSigAToB0Tag) || cmsIsTag(from, cmsSigDToB0Tag) ||
        cmsGetPCS(from) != cmsSigXYZData) {
        return std::nullopt;
    }
    const std::optional<Matrix> toConnection = primariesOf(from);
    const std::optional<Matrix> srgbToConnection = primariesOf(srgb);
    const std::optional<Matrix> toSrgb = srgbToConnection ? inverse(*srgbToConnection) : std::nullopt;
    if (!toConnection || !toSrgb) {
        return std::nullopt;
    }
    MatrixColors colors;
    colors.toSrgb = product(*toSrgb, *toConnection);
    constexpr std::array<cmsTagSignature, 3> tags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (std::size_t i = 0; i < 3; ++i) {
        const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(from, tags[i]));
        if (curve == nullptr) {
            return std::nullopt;
        }
        for (std::size_t value = 0; value < 256; ++value) {
            const double light = static_cast<double>(cmsEvalToneCurveFloat(curve, static_cast<float>(value) / 255.0F));
            colors.linear[i][value] = light > 0 ? std::min(light, 1.0) : 0; // NaN counts as none
        }
    }
    return colors;
}

std::shared_ptr<const ColorConversion::Step> makeStep(const Context& context, const Profile& from, ColorModel model) {
    const Profile srgb(cmsCreate_sRGBProfileTHR(context.get()));
    if (!from || !srgb || !isProfileFor(from.get(), model)) {
        return nullptr;
    }
    if (model == ColorModel::rgb) {
        if (const std::optional<MatrixColors> colors = matrixColorsOf(from.get(), srgb.get())) {
            return std::make_shared<MatrixStep>(*colors);
        }
    }
    const bool gray = model == ColorModel::gray;
    // The library's optimiser samples the curve of grey coarsely, which shows in dark levels.
    const cmsUInt32Number flags =
        cmsFLAGS_NOCACHE | (gray ? cmsFLAGS_NOOPTIMIZE : 0U) | (model == ColorModel::rgb ? cmsFLAGS_COPY_ALPHA : 0U);
    Transform transform(cmsCreateTransformTHR(context.get(), from.get(), pixelFormat(model), srgb.get(),
                                              gray ? TYPE_RGB_8 : TYPE_RGBA_8, INTENT_PERCEPTUAL, flags));
    if (!transform) {
        return nullptr;
    }
    if (!gray) {
        return std::make_shared<TransformStep>(context, std::move(transform), model != ColorModel::rgb);
    }
    GrayStep::Table table{};
    for (unsigned value = 0; value < 256; ++value) {
        const auto level = static_cast<std::uint8_t>(value);
        cmsDoTransform(transform.get(), &level, table[value].data(), 1);
    }
    return std::make_shared<GrayStep>(table);
}

/// Every grey level, and for colours a lattice over the cube: enough to know curves and primaries apart.
std::vector<std::uint8_t> testColors(ColorModel model) {
    std::vector<std::uint8_t> colors;
    for (int level = 0; level < 256; ++level) {
        colors.insert(colors.end(), 3, static_cast<std::uint8_t>(level));
        colors.push_back(255);
    }
    constexpr int step = 17;
    for (int red = 0; model == ColorModel::rgb && red < 256; red += step) {
        for (int green = 0; green < 256; green += step) {
            for (int blue = 0; blue < 256; blue += step) {
                for (const int value : {red, green, blue, 255}) {
                    colors.push_back(static_cast<std::uint8_t>(value));
                }
            }
        }
    }
    return colors;
}

} // namespace

ColorConversion ColorConversion::unlessIdentity(std::shared_ptr<const Step> step, ColorModel model) {
    if (!step) {
        return {};
    }
    if (model == ColorModel::gray || model == ColorModel::rgb) {
        const std::vector<std::uint8_t> before = testColors(model);
        std::vector<std::uint8_t> after = before;
        step->convert(after.data(), after.size() / 4);
        const bool same = std::equal(before.begin(), before.end(), after.begin(),
                                     [](int a, int b) { return std::abs(a - b) <= sameColor; });
        if (same) {
            return {};
        }
    }
    return ColorConversion(std::move(step));
}

ColorConversion ColorConversion::fromProfile(std::span<const std::byte> profile, ColorModel model) {
    const Context context = makeContext();
    if (!context || profile.empty() || profile.size() > largestProfile) {
        return {};
    }
    const Profile from(
        cmsOpenProfileFromMemTHR(context.get(), profile.data(), static_cast<cmsUInt32Number>(profile.size())));
    return unlessIdentity(makeStep(context, from, model), model);
}

ColorConversion ColorConversion::fromPrimaries(std::optional<double> exponent, const Chromaticities& primaries,
                                               ColorModel model) {
    const Context context = makeContext();
    if (!context || (exponent && !(*exponent > 0.05 && *exponent < 20))) {
        return {};
    }
    const std::array<double, 5> srgbCurve{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    const Curve curve(exponent ? cmsBuildGamma(context.get(), *exponent)
                               : cmsBuildParametricToneCurve(context.get(), 4, srgbCurve.data()));
    if (!curve) {
        return {};
    }
    const cmsCIExyY white{primaries.whiteX, primaries.whiteY, 1};
    Profile from;
    if (model == ColorModel::gray) {
        from.reset(cmsCreateGrayProfileTHR(context.get(), &white, curve.get()));
    } else {
        const cmsCIExyYTRIPLE triple{{primaries.redX, primaries.redY, 1},
                                     {primaries.greenX, primaries.greenY, 1},
                                     {primaries.blueX, primaries.blueY, 1}};
        const std::array<cmsToneCurve*, 3> curves{curve.get(), curve.get(), curve.get()};
        from.reset(cmsCreateRGBProfileTHR(context.get(), &white, &triple, curves.data()));
    }
    return unlessIdentity(makeStep(context, from, model), model);
}

void ColorConversion::convert(std::uint8_t* pixels, std::size_t count) const {
    if (convert_) {
        convert_->convert(pixels, count);
    }
}

void convertInksWithoutProfile(std::uint8_t* pixels, std::size_t count, bool inverted) {
    const unsigned flip = inverted ? 0 : 255;
    for (std::uint8_t* end = pixels + count * 4; pixels != end; pixels += 4) {
        const unsigned paper = pixels[3] ^ flip;
        for (int i = 0; i < 3; ++i) {
            pixels[i] = static_cast<std::uint8_t>(((pixels[i] ^ flip) * paper + 127) / 255);
        }
        pixels[3] = 255;
    }
}

} // namespace quillomat::codecs
