#include "VipsPeer.h"

#include "Peers.h"

namespace quillomat::benchmarks {

namespace {

using namespace vips;

void start() {
    static const bool isStarted = VIPS_INIT("benchmark") == 0;
    static_cast<void>(isStarted);
    vips_cache_set_max(0); // or the second composition costs nothing
}

/// Premultiplied pixels, seen in place.
Picture seen(const Bitmap& bitmap) {
    return made([&](VipsImage** out) {
        const Picture bare = made([&](VipsImage** image) {
            *image = vips_image_new_from_memory(bitmap.bytes().data(), bitmap.bytes().size(), bitmap.width(),
                                                bitmap.height(), 4, VIPS_FORMAT_UCHAR);
            return *image == nullptr ? 1 : 0;
        });
        return vips_copy(bare.get(), out, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
    });
}

Bitmap bitmapOf(const Picture& picture) {
    const Picture bytes = made([&](VipsImage** out) { return vips_cast_uchar(picture.get(), out, nullptr); });
    std::size_t size = 0;
    const std::unique_ptr<void, void (*)(void*)> pixels(vips_image_write_to_memory(bytes.get(), &size),
                                                        [](void* memory) { g_free(memory); });
    Bitmap bitmap({bytes->Xsize, bytes->Ysize});
    if (pixels && size == bitmap.bytes().size()) {
        std::copy_n(static_cast<const std::uint8_t*>(pixels.get()), size, bitmap.bytes().begin());
    }
    return bitmap;
}

class VipsPeer final : public Peer {
public:
    explicit VipsPeer(const Scene& scene)
        : scene_(scene)
        , background_(seen(*scene.background))
        , screenshot_(seen(*scene.screenshot))
        , frame_(seen(*scene.frame))
        , glare_(seen(*scene.glare)) {}

    void compose(int threads) override {
        vips_concurrency_set(threads);
        result_ = bitmapOf(composed(background_.get(), screenshot_.get(), frame_.get(), glare_.get(), scene_.quad,
                                    scene_.side, /*arePremultiplied=*/true));
    }
    [[nodiscard]] Bitmap result() const override { return result_; }

private:
    Scene scene_;
    Picture background_;
    Picture screenshot_;
    Picture frame_;
    Picture glare_;
    Bitmap result_;
};

} // namespace

std::unique_ptr<Peer> makeVipsPeer(const Scene& scene) {
    start();
    return std::make_unique<VipsPeer>(scene);
}

Bitmap warpWithVips(const Bitmap& picture, const Quad& quad, PixelSize size) {
    start();
    const Picture image = seen(picture);
    int left = 0;
    int top = 0;
    const Picture shown = warped(image.get(), quad, std::max(size.width, size.height), left, top);
    return bitmapOf(made(
        [&](VipsImage** out) { return vips_embed(shown.get(), out, left, top, size.width, size.height, nullptr); }));
}

} // namespace quillomat::benchmarks
