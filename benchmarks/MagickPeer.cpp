#include "MagickPeer.h"

#include "Peers.h"

namespace quillomat::benchmarks {

namespace {

/// Its pixels are straight.
Magick::Image imageOf(const Bitmap& bitmap) {
    std::vector<std::uint8_t> straight(bitmap.bytes().begin(), bitmap.bytes().end());
    for (std::size_t i = 0; i < straight.size(); i += 4) {
        for (std::size_t c = 0; c < 3 && straight[i + 3] != 0; ++c) {
            straight[i + c] = static_cast<std::uint8_t>(std::min(255, straight[i + c] * 255 / straight[i + 3]));
        }
    }
    Magick::Image image(static_cast<std::size_t>(bitmap.width()), static_cast<std::size_t>(bitmap.height()), "RGBA",
                        Magick::CharPixel, straight.data());
    return image;
}

Bitmap bitmapOf(Magick::Image image) {
    Bitmap bitmap({static_cast<int>(image.columns()), static_cast<int>(image.rows())});
    image.write(0, 0, image.columns(), image.rows(), "RGBA", Magick::CharPixel, bitmap.bytes().data());
    for (std::size_t i = 0; i < bitmap.bytes().size(); i += 4) {
        for (std::size_t c = 0; c < 3; ++c) {
            bitmap.bytes()[i + c] =
                static_cast<std::uint8_t>((bitmap.bytes()[i + c] * bitmap.bytes()[i + 3] + 127) / 255);
        }
    }
    return bitmap;
}

class MagickPeer final : public Peer {
public:
    explicit MagickPeer(const Scene& scene)
        : side_(scene.side)
        , quad_(scene.quad)
        , background_(imageOf(*scene.background))
        , screenshot_(imageOf(*scene.screenshot))
        , frame_(imageOf(*scene.frame))
        , glare_(imageOf(*scene.glare)) {}

    void compose(int threads) override {
        Magick::ResourceLimits::thread(static_cast<Magick::MagickSizeType>(threads));
        canvas_ = background_;
        magick::compose(canvas_, screenshot_, frame_, glare_, quad_, side_);
    }
    [[nodiscard]] Bitmap result() const override { return bitmapOf(canvas_); }

private:
    int side_;
    Quad quad_;
    Magick::Image background_;
    Magick::Image screenshot_;
    Magick::Image frame_;
    Magick::Image glare_;
    Magick::Image canvas_;
};

} // namespace

std::unique_ptr<Peer> makeMagickPeer(const Scene& scene) {
    Magick::InitializeMagick(nullptr);
    return std::make_unique<MagickPeer>(scene);
}

Bitmap warpWithMagick(const Bitmap& picture, const Quad& quad, PixelSize size) {
    Magick::InitializeMagick(nullptr);
    Magick::Image image = imageOf(picture);
    const int side = std::max(size.width, size.height);
    magick::warp(image, quad, side);
    image.crop(Magick::Geometry(static_cast<std::size_t>(size.width), static_cast<std::size_t>(size.height), 0, 0));
    image.repage();
    return bitmapOf(image);
}

} // namespace quillomat::benchmarks
