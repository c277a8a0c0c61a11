// Pictures and layers for tests of drawing: patterns that show every kind of wrong filter, quads as layers.
#pragma once

#include "geometry/Quad.h"
#include "platform/graphics/Recording.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <random>

namespace quillomat {

/// Small type on a gradient: what screenshots look like to a filter. Strokes are two pixels wide.
inline Bitmap screenshotLike(PixelSize size, bool opaque = true) {
    Bitmap bitmap(size);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const bool line = (y / 16) % 2 == 0;
            const std::uint32_t glyph =
                (static_cast<std::uint32_t>(x / 10) * 2654435761U + static_cast<std::uint32_t>(y / 32) * 40503U) >> 5;
            const bool ink = line && x % 10 < 8 && ((glyph >> ((x % 10) / 2 + (y % 16) / 2 * 4) % 27) & 1U) != 0;
            const int paper = 235 - y * 60 / size.height;
            const double alpha = opaque ? 1 : 0.65 + 0.35 * std::sin(x * 0.05) * std::cos(y * 0.04);
            std::uint8_t* pixel = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            const int colors[3] = {ink ? 20 : paper, ink ? 30 : paper - 10, ink ? 90 : 255 - x * 100 / size.width};
            for (int i = 0; i < 3; ++i) {
                pixel[i] = static_cast<std::uint8_t>(colors[i] * alpha);
            }
            pixel[3] = static_cast<std::uint8_t>(255 * alpha);
        }
    }
    return bitmap;
}

/// Rings that grow finer outwards, up to a period of `finest` pixels.
inline Bitmap zonePlate(PixelSize size, double finest = 3) {
    Bitmap bitmap(size);
    const double reach = std::hypot(size.width, size.height) / 2;
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            const double r = std::hypot(x - size.width / 2.0, y - size.height / 2.0);
            const double value = 127.5 + 127.5 * std::cos(3.14159265 * r * r / (reach * finest));
            std::uint8_t* pixel = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            std::fill_n(pixel, 3, static_cast<std::uint8_t>(value));
            pixel[3] = 255;
        }
    }
    return bitmap;
}

/// A smooth, photograph-like picture: sums of slow waves with some grain.
inline Bitmap photographLike(PixelSize size) {
    Bitmap bitmap(size);
    std::mt19937 random(5);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* pixel = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            for (int i = 0; i < 3; ++i) {
                const double wave = std::sin(x * 0.013 * (i + 1) + y * 0.007) + std::cos(y * 0.017 - x * 0.004 * i) +
                                    0.4 * std::sin(x * 0.11 + y * 0.09 + i);
                const double grain = static_cast<double>(random() % 9) - 4;
                pixel[i] = static_cast<std::uint8_t>(std::clamp(127 + wave * 45 + grain, 0.0, 255.0));
            }
            pixel[3] = 255;
        }
    }
    return bitmap;
}

/// A layer whose bounds are the quad's bounding box, as a fitted view draws it.
inline LayerDraw fittedLayer(const Image& picture, const Quad& quad, double radius = 0) {
    const Rect box = boundingBoxForQuadTR(quad.topRight, quad.topLeft, quad.bottomLeft, quad.bottomRight);
    const Rect bounds = makeRect(0, 0, box.size.width, box.size.height);
    LayerDraw draw;
    draw.map = Homography::fromTransform3D(rectToQuad(bounds, quad.topLeft - box.origin, quad.topRight - box.origin,
                                                      quad.bottomLeft - box.origin, quad.bottomRight - box.origin))
                   .then(Homography::fromAffine(AffineTransform::translation(box.origin.x, box.origin.y)));
    draw.shape = {bounds, radius};
    draw.picture = picture;
    draw.pictureRect = bounds;
    return draw;
}

inline Recording recordingOf(PixelSize size, LayerDraw draw) {
    Recording recording(size);
    recording.add(std::move(draw));
    return recording;
}

/// A rectangle of that size about a centre, turned.
inline Quad turnedQuad(Point center, Size size, double degrees) {
    const double angle = degrees * 3.14159265358979 / 180;
    const auto corner = [&](double x, double y) {
        return Point{center.x + std::cos(angle) * x - std::sin(angle) * y,
                     center.y + std::sin(angle) * x + std::cos(angle) * y};
    };
    const double w = size.width / 2;
    const double h = size.height / 2;
    return {corner(-w, -h), corner(w, -h), corner(-w, h), corner(w, h)};
}

} // namespace quillomat
