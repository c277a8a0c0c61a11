#include "WholeJob.h"

#include <QImage>
#include <QImageReader>
#include <QPainter>

#include <stdexcept>
#include <thread>
#include <vector>

namespace quillomat::benchmarks {

namespace {

QImage load(const std::string& path, QImage::Format format) {
    QImage image(QString::fromStdString(path));
    if (image.isNull()) {
        throw std::runtime_error("cannot read " + path);
    }
    image.convertTo(format);
    return image;
}

} // namespace

void doWholeJob(const WholeJob& job) {
    QImageReader::setAllocationLimit(0);
    QImage background, screenshot, frame, glare;
    inParallel(
        job.threads,
        [&] {
            background = load(job.path("background.jpg"), QImage::Format_RGB32);
            glare = load(job.path("glare.png"), QImage::Format_ARGB32_Premultiplied);
        },
        [&] {
            frame = load(job.path("frame.png"), QImage::Format_ARGB32_Premultiplied);
            screenshot = load(job.path("screenshot.png"), QImage::Format_RGB32);
        });
    const int cut = std::min(background.width(), background.height());
    const QRect part((background.width() - cut) / 2, (background.height() - cut) / 2, cut, cut);
    const double w = screenshot.width();
    const double h = screenshot.height();
    const QPolygonF from({{0, 0}, {w, 0}, {w, h}, {0, h}});
    const auto point = [](Point p) { return QPointF(p.x, p.y); };
    const QPolygonF to(
        {point(job.quad.topLeft), point(job.quad.topRight), point(job.quad.bottomRight), point(job.quad.bottomLeft)});
    QTransform transform;
    QTransform::quadToQuad(from, to, transform);

    QImage canvas(job.side, job.side, QImage::Format_RGB32);
    uchar* const bits = canvas.bits();
    const qsizetype stride = canvas.bytesPerLine();
    const auto compose = [&](int top, int bottom) {
        QImage band(bits + top * stride, job.side, bottom - top, stride, canvas.format());
        QPainter painter(&band);
        painter.setRenderHints(QPainter::SmoothPixmapTransform | QPainter::Antialiasing);
        painter.translate(0, -top);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QRect(0, 0, job.side, job.side), background, part);
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.save();
        painter.setTransform(transform, /*combine=*/true);
        painter.drawImage(0, 0, screenshot);
        painter.restore();
        painter.drawImage(0, 0, frame);
        painter.drawImage(0, 0, glare);
    };
    const int middle = job.threads > 1 ? job.side / 2 : job.side;
    inParallel(
        job.threads, [&] { compose(0, middle); },
        [&] {
            if (middle < job.side) {
                compose(middle, job.side);
            }
        });
    writeByLibpng(job.output, canvas.constBits(), job.side, static_cast<std::size_t>(stride));
}

} // namespace quillomat::benchmarks
