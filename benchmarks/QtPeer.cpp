#include "Peers.h"
#include "platform/foundation/Crew.h"

#include <QImage>
#include <QPainter>
#include <QPolygonF>
#include <QTransform>

#include <atomic>

namespace quillomat::benchmarks {

namespace {

QImage imageOf(const Bitmap& bitmap, bool opaque) {
    const QImage image(bitmap.bytes().data(), bitmap.width(), bitmap.height(), bitmap.width() * 4,
                       QImage::Format_RGBA8888_Premultiplied);
    return image.convertToFormat(opaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
}

QTransform transformOnto(const Quad& quad, const QImage& image) {
    const QPolygonF from(QRectF(0, 0, image.width(), image.height()));
    QPolygonF to;
    for (const Point p : {quad.topLeft, quad.topRight, quad.bottomRight, quad.bottomLeft}) {
        to << QPointF(p.x, p.y);
    }
    QTransform transform;
    QTransform::quadToQuad(QPolygonF(from.mid(0, 4)), to, transform);
    return transform;
}

Bitmap bitmapOf(const QImage& canvas) {
    const QImage image = canvas.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    Bitmap bitmap({image.width(), image.height()});
    for (int y = 0; y < image.height(); ++y) {
        std::copy_n(image.constScanLine(y), bitmap.stride(), bitmap.row(y));
    }
    return bitmap;
}

class QtPeer final : public Peer {
public:
    explicit QtPeer(const Scene& scene)
        : background_(imageOf(*scene.background, true))
        , screenshot_(imageOf(*scene.screenshot, true))
        , frame_(imageOf(*scene.frame, false))
        , glare_(imageOf(*scene.glare, false))
        , quad_(scene.quad)
        , canvas_(scene.side, scene.side, QImage::Format_ARGB32_Premultiplied) {}

    void compose(int threads) override {
        uchar* const bits = canvas_.bits();
        std::atomic<int> next = 0;
        Crew::shared().run(threads, [&] {
            for (int i = next++; i < threads; i = next++) {
                composeRows(bits, canvas_.height() * i / threads, canvas_.height() * (i + 1) / threads);
            }
        });
    }

    [[nodiscard]] Bitmap result() const override { return bitmapOf(canvas_); }

private:
    void composeRows(uchar* bits, int top, int bottom) {
        const qsizetype stride = canvas_.bytesPerLine();
        QImage band(bits + top * stride, canvas_.width(), bottom - top, canvas_.bytesPerLine(), canvas_.format());
        QPainter painter(&band);
        painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
        painter.translate(0, -top);
        const QRect whole(0, 0, canvas_.width(), canvas_.height());
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(whole, background_);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.save();
        painter.setTransform(transformOnto(quad_, screenshot_), /*combine=*/true);
        painter.drawImage(0, 0, screenshot_);
        painter.restore();
        painter.drawImage(0, 0, frame_);
        painter.drawImage(0, 0, glare_);
    }

    QImage background_;
    QImage screenshot_;
    QImage frame_;
    QImage glare_;
    Quad quad_;
    QImage canvas_;
};

} // namespace

std::unique_ptr<Peer> makeQtPeer(const Scene& scene) {
    return std::make_unique<QtPeer>(scene);
}

Bitmap warpWithQt(const Bitmap& picture, const Quad& quad, PixelSize size) {
    QImage canvas(size.width, size.height, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    const QImage image = imageOf(picture, true);
    QPainter painter(&canvas);
    painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
    painter.setTransform(transformOnto(quad, image));
    painter.drawImage(0, 0, image);
    painter.end();
    return bitmapOf(canvas);
}

} // namespace quillomat::benchmarks
