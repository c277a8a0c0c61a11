#include "platform/graphics/SparsePicture.h"

#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/raster/Layer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <thread>

namespace quillomat::testing {
namespace {

using Random = std::mt19937;

int upTo(Random& random, int most) {
    return std::uniform_int_distribution<int>(0, most)(random);
}

std::shared_ptr<const SparsePicture> sparse(const Bitmap& bitmap) {
    SparsePictureMaker maker(bitmap.size());
    for (int y = 0; y < bitmap.height(); ++y) {
        maker.addRow(bitmap.row(y));
    }
    return maker.finish();
}

/// Runs of random lengths: empty, of one colour, white light, black shadow, opaque grain, translucent grain.
Bitmap randomOverlay(PixelSize size, Random& random) {
    Bitmap bitmap(size);
    for (int y = 0; y < size.height; ++y) {
        std::uint8_t* row = bitmap.row(y);
        for (int x = 0; x < size.width;) {
            const int end = std::min(size.width, x + 1 + upTo(random, upTo(random, 1) == 0 ? 20 : 200));
            const int kind = upTo(random, 5);
            const int constant = upTo(random, 255);
            for (; x < end; ++x) {
                const int alpha = kind == 0 ? 0 : kind == 4 ? 255 : kind == 1 ? constant : upTo(random, 255);
                for (int i = 0; i < 3; ++i) {
                    const int color = kind == 1   ? alpha * (i + 1) / 4
                                      : kind == 2 ? alpha
                                      : kind == 3 ? 0
                                                  : upTo(random, alpha);
                    row[x * 4 + i] = static_cast<std::uint8_t>(color);
                }
                row[x * 4 + 3] = static_cast<std::uint8_t>(alpha);
            }
        }
    }
    return bitmap;
}

/// A picture that is there in runs only.
class SparseSource final : public ImageSource {
public:
    explicit SparseSource(const Bitmap& bitmap) : picture_(sparse(bitmap)) {}
    [[nodiscard]] PixelSize pixelSize() const override { return picture_->size(); }
    [[nodiscard]] bool isKnownOpaque() const override { return false; }
    [[nodiscard]] SharedBitmap bitmap() const override { return nullptr; }
    [[nodiscard]] std::shared_ptr<const SparsePicture> sparsePixels() const override { return picture_; }

private:
    std::shared_ptr<const SparsePicture> picture_;
};

Image inRuns(const Bitmap& bitmap) {
    return Image(std::make_shared<const SparseSource>(bitmap));
}

// Nothing is stored of such a row: what its runs say is no place in memory (the address sanitizer's build looks).
TEST(SparsePicture, rowsOfOneColourAreCopiedFromNothing) {
    Bitmap bitmap({40, 2});
    for (std::uint8_t& byte : bitmap.bytes()) {
        byte = 255;
    }
    const auto runs = sparse(bitmap);
    EXPECT_LT(runs->byteCount(), std::size_t{1} << 10);
    Bitmap copied(bitmap.size());
    for (int y = 0; y < 2; ++y) {
        runs->copy(y, 3, 40, copied.row(y) + 12);
        runs->copy(y, 0, 3, copied.row(y));
    }
    EXPECT_EQ(copied, bitmap);
}

TEST(SparsePicture, givesBackThePixelsOfAnyPicture) {
    Random random(1);
    for (int trial = 0; trial < 300; ++trial) {
        const PixelSize size{1 + upTo(random, 300), 1 + upTo(random, 4)};
        const Bitmap bitmap = randomOverlay(size, random);
        const auto picture = sparse(bitmap);
        for (int y = 0; y < size.height; ++y) {
            const int left = upTo(random, size.width);
            const int right = left + upTo(random, size.width - left);
            std::vector<std::uint8_t> row(static_cast<std::size_t>(right - left) * 4 + 8, 7);
            picture->copy(y, left, right, row.data() + 4);
            ASSERT_TRUE(std::equal(row.begin() + 4, row.end() - 4, bitmap.row(y) + left * 4)) << trial;
            ASSERT_EQ(row[3], 7);
            ASSERT_EQ(row[row.size() - 4], 7) << "nothing is written behind the last pixel";
        }
    }
}

TEST(SparsePicture, stretchesFollowOneAnotherAndAreWhatTheySay) {
    Random random(2);
    for (int trial = 0; trial < 200; ++trial) {
        const Bitmap bitmap = randomOverlay({1 + upTo(random, 500), 1}, random);
        const auto picture = sparse(bitmap);
        const Columns widest = picture->widestOpaque(0);
        int longest = 0;
        for (int x = 0; x < bitmap.width();) {
            const SparsePicture::Stretch stretch = picture->stretchAt(0, x, bitmap.width());
            ASSERT_GT(stretch.right, x);
            ASSERT_LE(stretch.right, bitmap.width());
            for (int i = x; i < stretch.right; ++i) {
                const std::uint8_t alpha = bitmap.row(0)[i * 4 + 3];
                ASSERT_TRUE(stretch.content != SparsePicture::Content::empty || alpha == 0);
                ASSERT_TRUE(stretch.content != SparsePicture::Content::opaque || alpha == 255);
            }
            if (stretch.pixels != nullptr) {
                ASSERT_TRUE(std::equal(bitmap.row(0) + x * 4, bitmap.row(0) + stretch.right * 4, stretch.pixels));
            }
            longest =
                stretch.content == SparsePicture::Content::opaque ? std::max(longest, stretch.right - x) : longest;
            x = stretch.right;
        }
        ASSERT_EQ(widest.length(), longest);
    }
}

TEST(SparsePicture, emptyAndOneColouredPicturesTakeNextToNothing) {
    Bitmap bitmap({2000, 100});
    EXPECT_LT(sparse(bitmap)->byteCount(), 10000U);
    std::fill(bitmap.bytes().begin(), bitmap.bytes().end(), std::uint8_t{255});
    EXPECT_LT(sparse(bitmap)->byteCount(), 10000U);
    EXPECT_TRUE(sparse(bitmap)->isOpaque());
    EXPECT_EQ(sparse(bitmap)->widestOpaque(99), (Columns{0, 2000}));
    bitmap.row(99)[4 * 1000 + 3] = 254;
    EXPECT_FALSE(sparse(bitmap)->isOpaque());
}

TEST(SparsePicture, repeatedRowsAreTheRowsBefore) {
    Random random(3);
    Bitmap bitmap = randomOverlay({100, 1}, random);
    SparsePictureMaker maker({100, 4});
    EXPECT_TRUE(maker.lastRowIsEmpty());
    maker.repeatRow();
    EXPECT_TRUE(maker.lastRowIsEmpty());
    maker.addRow(bitmap.row(0));
    EXPECT_FALSE(maker.lastRowIsEmpty());
    maker.repeatRow();
    maker.repeatRow();
    const auto picture = maker.finish();
    std::vector<std::uint8_t> row(400, 7);
    picture->copy(0, 0, 100, row.data());
    EXPECT_EQ(row, std::vector<std::uint8_t>(400));
    for (int y = 1; y < 4; ++y) {
        picture->copy(y, 0, 100, row.data());
        EXPECT_TRUE(std::equal(row.begin(), row.end(), bitmap.row(0)));
    }
}

/// A canvas with something below, the overlay, and something above that hides a part of both.
Recording recordingWith(const Image& overlay, PixelSize canvas, Random random) {
    const Bitmap below = randomOverlay({canvas.width, canvas.height}, random);
    BitmapContext context({static_cast<double>(canvas.width), static_cast<double>(canvas.height)});
    context.drawImage(Image::fromBitmap(below), makeRect(0, 0, canvas.width, canvas.height));
    LayerDraw draw;
    const PixelSize size = overlay.pixelSize();
    const double x = upTo(random, 2 * canvas.width) - canvas.width;
    const double y = upTo(random, 2 * canvas.height) - canvas.height;
    draw.picture = overlay;
    draw.pictureRect = makeRect(x, y, size.width, size.height);
    const double inset = upTo(random, 2) == 0 ? 0 : upTo(random, 100) / 16.0;
    draw.shape = {makeRect(x + inset, y + inset / 2, size.width - inset, size.height - inset),
                  upTo(random, 1) * upTo(random, 40) / 3.0};
    draw.opacity = upTo(random, 2) == 0 ? upTo(random, 100) / 100.0 : 1;
    if (upTo(random, 3) == 0) {
        draw.fill = Color{0.5, 0.25, 1, 0.5};
    }
    if (upTo(random, 3) == 0) {
        draw.borderWidth = 2.5;
        draw.borderColor = Color{1, 0, 0, 1};
    }
    if (upTo(random, 2) == 0) {
        draw.clips.push_back({Homography{}, {makeRect(10.3, 5.7, canvas.width / 2.0, canvas.height / 2.0), 6}});
    }
    context.drawLayer(draw);
    Bitmap above({20, 20});
    std::fill(above.bytes().begin(), above.bytes().end(), std::uint8_t{255});
    context.drawImage(Image::fromBitmap(above), makeRect(upTo(random, 100), upTo(random, 20), 20, 20));
    return context.recording();
}

TEST(SparsePicture, isDrawnAsItsBitmapIs) {
    Random random(4);
    for (int trial = 0; trial < 300; ++trial) {
        const Bitmap overlay = randomOverlay({1 + upTo(random, 250), 1 + upTo(random, 50)}, random);
        const PixelSize canvas{1 + upTo(random, 200), 1 + upTo(random, 60)};
        const Random seed(static_cast<unsigned>(trial));
        const Bitmap expected = rasterize(recordingWith(Image::fromBitmap(overlay), canvas, seed), 1);
        const Recording recording = recordingWith(inRuns(overlay), canvas, seed);
        ASSERT_EQ(rasterize(recording, 1), expected) << trial;
        ASSERT_EQ(rasterize(recording, 5), expected) << trial;
    }
}

TEST(SparsePicture, whatIsOpaqueHidesWhatLiesBelow) {
    Bitmap overlay({200, 2});
    std::fill(overlay.row(0) + 48 * 4, overlay.row(0) + 160 * 4, std::uint8_t{255});
    LayerDraw draw;
    draw.picture = inRuns(overlay);
    draw.pictureRect = makeRect(5, 3, 200, 2);
    draw.shape.rect = draw.pictureRect;
    const PixelSize canvas{300, 10};
    const auto hidden = [&](int y) {
        raster::Pyramids pyramids;
        const auto layer = raster::Layer::make(draw, canvas, raster::bestKernels(), pyramids);
        raster::LayerScratch scratch;
        const raster::Span span = layer->hiddenBelow(y, scratch);
        return std::pair(span.left, span.right);
    };
    EXPECT_EQ(hidden(3), std::pair(53, 165));
    EXPECT_EQ(hidden(4), std::pair(0, 0)) << "an empty row";
    EXPECT_EQ(hidden(2), std::pair(0, 0)) << "above the picture";
    draw.clips.push_back({Homography{}, {makeRect(0, 0, 100, 10), 0}});
    EXPECT_EQ(hidden(3).first, 53);
    EXPECT_LE(hidden(3).second, 100);
    EXPECT_GE(hidden(3).second, 98);
    draw.opacity = 0.9;
    EXPECT_EQ(hidden(3), std::pair(0, 0)) << "what is below shines through";
}

TEST(SparsePicture, anyBandMayBeDrawnAtAnyTime) {
    Random random(5);
    const PixelSize canvas{300, 97};
    const Bitmap overlay = randomOverlay(canvas, random);
    const Recording recording = recordingWith(inRuns(overlay), canvas, Random(3));
    const Bitmap expected = rasterize(recordingWith(Image::fromBitmap(overlay), canvas, Random(3)), 1);
    std::vector<int> rows(97);
    std::iota(rows.begin(), rows.end(), 0);
    std::shuffle(rows.begin(), rows.end(), random);
    const Rasterizer rasterizer(recording);
    Bitmap drawn(canvas);
    const auto draw = [&](std::size_t begin) {
        for (std::size_t i = begin; i < rows.size(); i += 3) {
            rasterizer.rows(rows[i], 1, {drawn.row(rows[i]), drawn.stride()});
        }
    };
    {
        const std::jthread first(draw, 0);
        const std::jthread second(draw, 1);
        draw(2);
    }
    EXPECT_EQ(drawn, expected);
}

} // namespace
} // namespace quillomat::testing
