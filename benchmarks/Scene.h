// The job that renderers are compared on: background photograph, screenshot in perspective, device frame, glare.
#pragma once

#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/SparsePicture.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace quillomat::benchmarks {

/// Pixels and runs that are there already, as the readers hand unscaled overlays to the renderer.
class OverlaySource final : public ImageSource {
public:
    explicit OverlaySource(SharedBitmap bitmap) : bitmap_(std::move(bitmap)) {
        SparsePictureMaker maker(bitmap_->size());
        for (int y = 0; y < bitmap_->height(); ++y) {
            maker.addRow(bitmap_->row(y));
        }
        runs_ = maker.finish();
    }

    [[nodiscard]] PixelSize pixelSize() const override { return bitmap_->size(); }
    [[nodiscard]] bool isKnownOpaque() const override { return runs_->isOpaque(); }
    [[nodiscard]] SharedBitmap bitmap() const override { return bitmap_; }
    [[nodiscard]] std::shared_ptr<const SparsePicture> sparsePixels() const override { return runs_; }

private:
    SharedBitmap bitmap_;
    std::shared_ptr<const SparsePicture> runs_;
};

struct Scene {
    int side = 0;
    Quad quad;
    Image photograph;        // 4000 x 3000, a JPEG document
    SharedBitmap background; // its pixels
    SharedBitmap screenshot; // 1290 x 2796
    SharedBitmap frame;      // as large as the canvas, its screen and surroundings clear
    SharedBitmap glare;      // as large as the canvas, faint over the screen
};

enum class Slant { mild, strong };

/// Corners for a canvas of that side.
inline Quad quadOf(Slant slant, double side) {
    const double s = side / 3000;
    const Quad quad = slant == Slant::mild ? Quad{{840, 240}, {2150, 270}, {850, 2750}, {2160, 2720}}
                                           : Quad{{700, 440}, {2300, 240}, {900, 2400}, {2150, 2850}};
    const auto scaled = [s](Point p) { return Point{p.x * s, p.y * s}; };
    return {scaled(quad.topLeft), scaled(quad.topRight), scaled(quad.bottomLeft), scaled(quad.bottomRight)};
}

/// A frame's bezel about the quad with a soft shadow outside, or a glare inside it.
inline Bitmap overlayOf(const Quad& quad, int side, bool glare) {
    Bitmap bitmap({side, side});
    const Point corners[4] = {quad.topLeft, quad.topRight, quad.bottomRight, quad.bottomLeft};
    const double bezel = side * 0.02;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            double outside = -1e9;
            for (int i = 0; i < 4; ++i) {
                const Point from = corners[i];
                const Point along = corners[(i + 1) % 4] - from;
                const double cross = along.y * (x + 0.5 - from.x) - along.x * (y + 0.5 - from.y);
                outside = std::max(outside, cross / std::hypot(along.x, along.y));
            }
            std::uint8_t* pixel = bitmap.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            if (glare) {
                const int alpha = outside < 0 ? std::clamp(40 - (x + y) * 60 / side, 0, 40) : 0;
                std::fill_n(pixel, 4, static_cast<std::uint8_t>(alpha));
            } else if (outside > -1 && outside < bezel) {
                const auto shade = static_cast<std::uint8_t>(24 + 40 * outside / bezel);
                std::fill_n(pixel, 3, shade);
                pixel[3] = static_cast<std::uint8_t>(255 * std::min(1.0, outside + 1));
                std::fill_n(pixel, 3, static_cast<std::uint8_t>(shade * pixel[3] / 255));
            } else if (outside >= bezel && outside < 2 * bezel) {
                pixel[3] = static_cast<std::uint8_t>(90 * (2 * bezel - outside) / bezel);
            }
        }
    }
    return bitmap;
}

inline Scene makeScene(int side, Slant slant) {
    static const Image photograph = imageFromBytes(testing::jpegOf(photographLike({4000, 3000}))).value();
    static const SharedBitmap background = photograph.bitmap();
    static const auto screenshot = std::make_shared<const Bitmap>(screenshotLike({1290, 2796}));
    const Quad quad = quadOf(slant, side);
    return {side,
            quad,
            photograph,
            background,
            screenshot,
            std::make_shared<const Bitmap>(overlayOf(quad, side, /*glare=*/false)),
            std::make_shared<const Bitmap>(overlayOf(quad, side, /*glare=*/true))};
}

/// Pictures are decoded already, as the renderer has them decoded: the photograph into planes where it is stretched out
/// of those.
inline Recording recordingOfScene(const Scene& scene) {
    const double side = scene.side;
    BitmapContext context({side, side});
    context.drawImage(scene.photograph, makeRect(0, 0, side, side));
    context.drawLayer(fittedLayer(Image::fromBitmap(scene.screenshot), scene.quad, side * 0.02));
    for (const SharedBitmap& overlay : {scene.frame, scene.glare}) {
        context.drawImage(Image(std::make_shared<const OverlaySource>(overlay)), makeRect(0, 0, side, side));
    }
    return withDecodedPictures(context.recording());
}

} // namespace quillomat::benchmarks
