// libvips, wrapped: the pipeline that composes, for the composing benchmark and for the whole job.
#pragma once

#include "geometry/Homography.h"
#include "geometry/Quad.h"

#include <vips/vips.h>

#include <memory>
#include <stdexcept>
#include <string>

namespace quillomat::benchmarks::vips {

struct Unref {
    void operator()(VipsImage* image) const { g_object_unref(image); }
};
using Picture = std::unique_ptr<VipsImage, Unref>;

inline void check(int failed) {
    if (failed != 0) {
        throw std::runtime_error(vips_error_buffer());
    }
}

/// What an operation gives; it is called with where to put it.
template <typename Operation> Picture made(const Operation& operation) {
    VipsImage* out = nullptr;
    check(operation(&out));
    return Picture(out);
}

/// The positions in the picture that each pixel of `box` shows, for `mapim`.
inline Picture positions(const Homography& toPicture, int left, int top, int width, int height) {
    const Picture places = made([&](VipsImage** out) { return vips_xyz(out, width, height, nullptr); });
    const auto& m = toPicture.m;
    const double x = left + 0.5;
    const double y = top + 0.5;
    // Sums of the two bands, weighted: the numerators and the denominator of a projective map.
    const auto weighted = [&](double byX, double byY, double rest) {
        double weights[2] = {byX, byY};
        const Picture matrix = made([&](VipsImage** out) {
            *out = vips_image_new_matrix_from_array(2, 1, weights, 2);
            return *out == nullptr ? 1 : 0;
        });
        const Picture sum =
            made([&](VipsImage** out) { return vips_recomb(places.get(), out, matrix.get(), nullptr); });
        return made(
            [&](VipsImage** out) { return vips_linear1(sum.get(), out, 1, rest + byX * x + byY * y, nullptr); });
    };
    const Picture u = weighted(m[0], m[3], m[6]);
    const Picture v = weighted(m[1], m[4], m[7]);
    const Picture w = weighted(m[2], m[5], m[8]);
    const Picture both = made([&](VipsImage** out) { return vips_bandjoin2(u.get(), v.get(), out, nullptr); });
    const Picture divided = made([&](VipsImage** out) { return vips_divide(both.get(), w.get(), out, nullptr); });
    return made([&](VipsImage** out) { return vips_linear1(divided.get(), out, 1, -0.5, nullptr); });
}

/// The picture (with alpha) in its quad, cut to the quad's box, whose corner goes into `left` and `top`.
inline Picture warped(VipsImage* picture, const Quad& quad, int side, int& left, int& top) {
    const double w = picture->Xsize;
    const double h = picture->Ysize;
    const Homography map = Homography::fromTransform3D(
        rectToQuad(makeRect(0, 0, w, h), quad.topLeft, quad.topRight, quad.bottomLeft, quad.bottomRight));
    const Rect box = boundingBoxForQuadTR(quad.topRight, quad.topLeft, quad.bottomLeft, quad.bottomRight);
    left = std::max(0, static_cast<int>(box.minX()));
    top = std::max(0, static_cast<int>(box.minY()));
    const int right = std::min(side, static_cast<int>(box.maxX()) + 1);
    const int bottom = std::min(side, static_cast<int>(box.maxY()) + 1);
    const Picture where = positions(map.inverse().value_or(Homography{}), left, top, right - left, bottom - top);
    double clear[] = {0, 0, 0, 0};
    const std::unique_ptr<VipsArrayDouble, void (*)(VipsArrayDouble*)> background(
        vips_array_double_new(clear, 4), [](VipsArrayDouble* array) { vips_area_unref(VIPS_AREA(array)); });
    return made([&](VipsImage** out) {
        return vips_mapim(picture, out, where.get(), "background", background.get(), "premultiplied", TRUE, nullptr);
    });
}

/// The mockup as a pipeline that nothing has asked for pixels yet.
inline Picture composed(VipsImage* background, VipsImage* screenshot, VipsImage* frame, VipsImage* glare,
                        const Quad& quad, int side, bool arePremultiplied) {
    const Picture stretched = made([&](VipsImage** out) {
        return vips_resize(background, out, static_cast<double>(side) / background->Xsize, "vscale",
                           static_cast<double>(side) / background->Ysize, "kernel", VIPS_KERNEL_LINEAR, nullptr);
    });
    int left = 0;
    int top = 0;
    const Picture shown = warped(screenshot, quad, side, left, top);
    VipsImage* layers[] = {stretched.get(), shown.get(), frame, glare};
    int modes[] = {VIPS_BLEND_MODE_OVER, VIPS_BLEND_MODE_OVER, VIPS_BLEND_MODE_OVER};
    int xs[] = {left, 0, 0};
    int ys[] = {top, 0, 0};
    const std::unique_ptr<VipsArrayInt, void (*)(VipsArrayInt*)> x(
        vips_array_int_new(xs, 3), [](VipsArrayInt* array) { vips_area_unref(VIPS_AREA(array)); });
    const std::unique_ptr<VipsArrayInt, void (*)(VipsArrayInt*)> y(
        vips_array_int_new(ys, 3), [](VipsArrayInt* array) { vips_area_unref(VIPS_AREA(array)); });
    return made([&](VipsImage** out) {
        return vips_composite(layers, out, 4, modes, "x", x.get(), "y", y.get(), "premultiplied",
                              arePremultiplied ? TRUE : FALSE, nullptr);
    });
}

} // namespace quillomat::benchmarks::vips
