#include "platform/graphics/ChangingPicture.h"

#include "DrawnPictures.h"
#include "platform/foundation/FileManager.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/Rasterizer.h"

#include <gtest/gtest.h>

#include <random>

namespace quillomat {
namespace {

const PixelSize canvas{240, 200};

LayerDraw stretched(const Image& picture, const Rect& rect) {
    LayerDraw draw;
    draw.shape = {rect, 0};
    draw.picture = picture;
    draw.pictureRect = rect;
    return draw;
}

LayerDraw filled(const Rect& rect, const Color& color) {
    LayerDraw draw;
    draw.shape = {rect, 0};
    draw.fill = color;
    return draw;
}

Recording recordingOf(const std::vector<LayerDraw>& draws, PixelSize size = canvas) {
    Recording recording(size);
    for (const LayerDraw& draw : draws) {
        recording.add(draw);
    }
    return recording;
}

/// Pixels outside the box that the two bitmaps do not share.
int differencesOutside(const PixelRect& box, const Bitmap& a, const Bitmap& b) {
    int count = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            const bool inside = x >= box.x && x < box.x + box.width && y >= box.y && y < box.y + box.height;
            const auto at = static_cast<std::ptrdiff_t>(x) * 4;
            count += !inside && !std::equal(a.row(y) + at, a.row(y) + at + 4, b.row(y) + at) ? 1 : 0;
        }
    }
    return count;
}

/// A mockup's layers: an opaque background, a screen in perspective, a translucent frame, a marker, bordered and
/// clipped boxes.
class Mockup {
public:
    [[nodiscard]] std::vector<LayerDraw> draws() const {
        std::vector<LayerDraw> result{stretched(background_, makeRect(0, 0, 240, 200)), fittedLayer(screen_, quad, 6),
                                      stretched(frame_, makeRect(10.5, 8, 200, 180)), marker};
        LayerDraw bordered = filled(makeRect(30, 120, 90, 50), {0.2, 0.4, 0.9, 0.5});
        bordered.shape.radius = 9;
        bordered.borderWidth = 3;
        bordered.borderColor = {1, 1, 0, 1};
        bordered.picture = screen_;
        bordered.pictureRect = makeRect(40, 125, 40, 40);
        bordered.clips = {{Homography{}, {makeRect(0, 0, 100, 160), 20}}};
        result.push_back(bordered);
        return result;
    }

    Quad quad{{60.5, 30}, {170, 22}, {52, 170}, {181, 160.25}};
    LayerDraw marker = filled(makeRect(50, 20, 20, 20), {1, 0, 0, 0.5});

private:
    Image background_ = Image::fromBitmap(photographLike({700, 500}));
    Image screen_ = Image::fromBitmap(screenshotLike({300, 420}));
    Image frame_ = Image::fromBitmap(screenshotLike({500, 460}, /*opaque=*/false));
};

TEST(ChangingPicture, firstPictureIsWhole) {
    const Recording recording = recordingOf(Mockup().draws());
    ChangingPicture picture;
    EXPECT_EQ(picture.draw(recording), (PixelRect{0, 0, 240, 200}));
    EXPECT_EQ(picture.bitmap(), rasterize(recording));
}

TEST(ChangingPicture, nothingChangedDrawsNothing) {
    const Mockup mockup;
    ChangingPicture picture;
    picture.draw(recordingOf(mockup.draws()));
    const PixelRect box = picture.draw(recordingOf(mockup.draws()));
    EXPECT_EQ(box.width, 0);
    EXPECT_EQ(box.height, 0);
    EXPECT_EQ(picture.bitmap(), rasterize(recordingOf(mockup.draws())));
}

TEST(ChangingPicture, movedMarkerDrawsWhereItWasAndWhereItIs) {
    Mockup mockup;
    ChangingPicture picture;
    picture.draw(recordingOf(mockup.draws()));
    mockup.marker.shape.rect.origin = {64, 35};
    EXPECT_EQ(picture.draw(recordingOf(mockup.draws())), (PixelRect{50, 20, 34, 35}));
    EXPECT_EQ(picture.bitmap(), rasterize(recordingOf(mockup.draws())));
}

TEST(ChangingPicture, draggedCornersGiveTheBitsOfTheWholePicture) {
    Mockup mockup;
    ChangingPicture picture(2);
    picture.draw(recordingOf(mockup.draws()));
    std::mt19937 random(11);
    std::uniform_real_distribution<double> step(-9, 9);
    for (int i = 0; i < 60; ++i) {
        const Bitmap before = picture.bitmap();
        Point* const corners[] = {&mockup.quad.topLeft, &mockup.quad.topRight, &mockup.quad.bottomLeft,
                                  &mockup.quad.bottomRight};
        Point& corner = *corners[i % 4];
        corner = {corner.x + step(random), corner.y + step(random)};
        mockup.marker.shape.rect.origin = {corner.x - 10, corner.y - 10};
        const Recording recording = recordingOf(mockup.draws());
        const PixelRect box = picture.draw(recording);
        ASSERT_EQ(picture.bitmap(), rasterize(recording)) << "drag " << i;
        ASSERT_EQ(differencesOutside(box, before, picture.bitmap()), 0) << "drag " << i;
    }
}

TEST(ChangingPicture, layersThatComeGoAndChangePlacesGiveTheBitsOfTheWholePicture) {
    const Mockup mockup;
    std::vector<LayerDraw> draws = mockup.draws();
    const std::vector<LayerDraw> all = draws;
    ChangingPicture picture(1);
    std::mt19937 random(12);
    for (int i = 0; i < 120; ++i) {
        const std::size_t at = draws.empty() ? 0 : random() % draws.size();
        switch (random() % 4) {
        case 0:
            draws.insert(draws.begin() + static_cast<std::ptrdiff_t>(at), all[random() % all.size()]);
            break;
        case 1:
            if (!draws.empty()) {
                draws.erase(draws.begin() + static_cast<std::ptrdiff_t>(at));
            }
            break;
        case 2:
            if (!draws.empty()) {
                std::swap(draws[at], draws[random() % draws.size()]);
            }
            break;
        default:
            if (!draws.empty()) {
                draws[at].opacity = static_cast<double>(random() % 5) / 4;
            }
        }
        const Recording recording = recordingOf(draws);
        const Bitmap before = picture.bitmap();
        const PixelRect box = picture.draw(recording);
        ASSERT_EQ(picture.bitmap(), rasterize(recording)) << "change " << i;
        if (i > 0) {
            ASSERT_EQ(differencesOutside(box, before, picture.bitmap()), 0) << "change " << i;
        }
    }
}

TEST(ChangingPicture, anotherCanvasIsDrawnWhole) {
    const Mockup mockup;
    ChangingPicture picture;
    picture.draw(recordingOf(mockup.draws()));
    for (const PixelSize size : {PixelSize{120, 90}, PixelSize{300, 310}}) {
        const Recording recording = recordingOf(mockup.draws(), size);
        EXPECT_EQ(picture.draw(recording), (PixelRect{0, 0, size.width, size.height}));
        EXPECT_EQ(picture.bitmap(), rasterize(recording));
    }
    EXPECT_EQ(picture.draw(Recording({0, 5})), PixelRect{});
    EXPECT_TRUE(picture.bitmap().size().isEmpty());
}

TEST(ChangingPicture, recordingsInsideAreComparedByWhatTheyDraw) {
    const auto group = [](double x) {
        Recording inner({100, 100});
        inner.add(filled(makeRect(x, 10, 30, 30), {0, 1, 0, 1}));
        LayerDraw whole = stretched(imageOfRecording(std::move(inner)), makeRect(20, 20, 100, 100));
        whole.opacity = 0.5;
        return whole;
    };
    const Mockup mockup;
    std::vector<LayerDraw> draws = mockup.draws();
    draws.push_back(group(10));
    ChangingPicture picture;
    picture.draw(recordingOf(draws));
    draws.back() = group(10);
    EXPECT_EQ(picture.draw(recordingOf(draws)).width, 0);
    draws.back() = group(40);
    EXPECT_EQ(picture.draw(recordingOf(draws)), (PixelRect{20, 20, 100, 100}));
    EXPECT_EQ(picture.bitmap(), rasterize(recordingOf(draws)));
}

TEST(ChangingPicture, aPictureThatMovesIsNotDecodedAgain) {
    const auto encoded = encodePng(Image::fromBitmap(screenshotLike({300, 420})));
    ASSERT_TRUE(encoded);
    const auto image = imageFromBytes(*encoded);
    ASSERT_TRUE(image);
    ChangingPicture picture;
    Quad quad{{60.5, 30}, {170, 22}, {52, 170}, {181, 160.25}};
    picture.draw(recordingOf({fittedLayer(*image, quad)}));
    const std::weak_ptr<const Bitmap> decoded = image->bitmap();
    for (int i = 0; i < 3; ++i) {
        quad.topLeft.x += 2;
        picture.draw(recordingOf({fittedLayer(*image, quad)}));
        EXPECT_FALSE(decoded.expired());
    }
    picture.draw(recordingOf(std::vector<LayerDraw>{}));
    EXPECT_EQ(picture.bitmap(), Bitmap(canvas));
}

} // namespace
} // namespace quillomat
