#include "hosts/qt/PreviewPainter.h"

#include "platform/graphics/Rasterizer.h"

#include <gtest/gtest.h>

namespace quillomat {
namespace {

LayerDraw box(const Rect& rect, const Color& color) {
    LayerDraw draw;
    draw.shape = {rect, 5};
    draw.fill = color;
    return draw;
}

/// A grey ground and a translucent box at that height.
Recording recordingWithBoxAt(double top) {
    Recording recording({70, 400});
    recording.add(box(makeRect(0, 0, 70, 400), {0.3, 0.4, 0.5, 1}));
    recording.add(box(makeRect(10, top, 30, 30), {1, 0.2, 0, 0.4}));
    return recording;
}

QImage joined(const PaintedPicture& picture) {
    QImage whole(picture.size, QImage::Format_ARGB32_Premultiplied);
    for (std::size_t i = 0; i < picture.strips.size(); ++i) {
        const QRect place = picture.place(i);
        EXPECT_EQ(picture.strips[i].size(), place.size());
        for (int y = 0; y < place.height(); ++y) {
            std::copy_n(picture.strips[i].constScanLine(y), picture.strips[i].bytesPerLine(),
                        whole.scanLine(place.y() + y));
        }
    }
    return whole;
}

QImage expected(const Recording& recording) {
    const Bitmap bitmap = rasterize(recording);
    const QImage pixels(bitmap.bytes().data(), bitmap.width(), bitmap.height(), static_cast<qsizetype>(bitmap.stride()),
                        QImage::Format_RGBA8888_Premultiplied);
    return pixels.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

std::vector<qint64> keys(const PaintedPicture& picture) {
    std::vector<qint64> result;
    for (const QImage& strip : picture.strips) {
        result.push_back(strip.cacheKey());
    }
    return result;
}

TEST(PreviewPainter, stripsMakeUpThePicture) {
    PreviewPainter painter;
    const PaintedPicture picture = painter.paint(recordingWithBoxAt(20));
    EXPECT_EQ(picture.size, QSize(70, 400));
    EXPECT_EQ(picture.strips.size(), 4U);
    EXPECT_EQ(joined(picture), expected(recordingWithBoxAt(20)));
}

TEST(PreviewPainter, onlyStripsThatChangedAreMadeAnew) {
    PreviewPainter painter;
    const auto before = keys(painter.paint(recordingWithBoxAt(20)));
    const PaintedPicture moved = painter.paint(recordingWithBoxAt(140));
    const auto after = keys(moved);
    EXPECT_NE(after[0], before[0]);
    EXPECT_NE(after[1], before[1]);
    EXPECT_EQ(after[2], before[2]);
    EXPECT_EQ(after[3], before[3]);
    EXPECT_EQ(joined(moved), expected(recordingWithBoxAt(140)));
    EXPECT_EQ(keys(painter.paint(recordingWithBoxAt(140))), after);
}

TEST(PreviewPainter, aPictureThatIsStillShownIsNotPaintedOver) {
    PreviewPainter painter;
    const PaintedPicture shown = painter.paint(recordingWithBoxAt(20));
    const QImage before = joined(shown);
    (void)painter.paint(recordingWithBoxAt(30));
    EXPECT_EQ(joined(shown), before);
}

TEST(PreviewPainter, anotherSizeIsPaintedWhole) {
    PreviewPainter painter;
    (void)painter.paint(recordingWithBoxAt(20));
    Recording wider({90, 260});
    wider.add(box(makeRect(0, 0, 90, 260), {0, 0, 1, 1}));
    const PaintedPicture picture = painter.paint(wider);
    EXPECT_EQ(picture.strips.size(), 3U);
    EXPECT_EQ(joined(picture), expected(wider));
}

} // namespace
} // namespace quillomat
