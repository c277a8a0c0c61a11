// Draws difficult cases here, with each peer and with the slow exact renderer, enlarged and labelled: usage:
// benchmark_side_by_side OUTPUT.png
#include "Peers.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/ReferenceRenderer.h"

#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quillomat::benchmarks {
namespace {

constexpr int cell = 232; // shown pixels, each way
constexpr int margin = 12;
constexpr int header = 30;
constexpr int titles = 168; // for the names of the cases

struct Case {
    QString name;
    Bitmap picture;
    Quad quad;
    PixelSize canvas;
    QRect crop; // of the canvas, shown over the whole cell
};

Bitmap white(PixelSize size) {
    Bitmap bitmap(size);
    std::fill(bitmap.bytes().begin(), bitmap.bytes().end(), std::uint8_t{255});
    return bitmap;
}

std::vector<Case> cases() {
    const PixelSize canvas{420, 520};
    const Quad mild{{40, 50}, {390, 62}, {52, 480}, {380, 470}};
    const Quad strong{{90, 40}, {340, 110}, {60, 490}, {330, 420}};
    const Quad steep{{130, 150}, {290, 150}, {30, 330}, {390, 330}};
    const Quad small{{30, 40}, {330, 50}, {40, 420}, {322, 428}};
    std::vector<Case> all;
    all.push_back({"zone plate,\nmild quad", zonePlate({344, 420}), mild, canvas, {40, 50, 348, 348}});
    all.push_back({"zone plate,\nshrunk 3.3 times", zonePlate({990, 1254}), small, canvas, {30, 60, 290, 290}});
    all.push_back({"zone plate,\nshrunk 3 times,\nturned by 30°",
                   zonePlate({774, 945}),
                   turnedQuad({210.3, 260.2}, {260, 318}, 30),
                   canvas,
                   {70, 120, 290, 290}});
    all.push_back({"small type,\nstrong quad", screenshotLike({344, 420}), strong, canvas, {100, 100, 116, 116}});
    all.push_back({"small type,\nshrunk 3.3 times", screenshotLike({990, 1254}), small, canvas, {60, 60, 116, 116}});
    all.push_back(
        {"small type,\nsteeply\nforeshortened", screenshotLike({344, 420}), steep, canvas, {120, 146, 116, 116}});
    all.push_back({"slanted edges,\n8 times", white({344, 420}), strong, canvas, {76, 36, 29, 29}});
    all.push_back({"nearly level edge,\n8 times", white({344, 420}), mild, canvas, {200, 42, 29, 29}});
    return all;
}

QImage shown(const Bitmap& bitmap, const QRect& crop) {
    QImage canvas(bitmap.width(), bitmap.height(), QImage::Format_RGB32);
    canvas.fill(QColor(24, 26, 34));
    QPainter painter(&canvas);
    painter.drawImage(0, 0,
                      QImage(bitmap.bytes().data(), bitmap.width(), bitmap.height(), bitmap.width() * 4,
                             QImage::Format_RGBA8888_Premultiplied));
    painter.end();
    // Whole pixels, as large as they go.
    const int zoom = std::max(1, cell / crop.width());
    const QImage part = canvas.copy(crop);
    return part.scaled(part.size() * zoom, Qt::IgnoreAspectRatio, Qt::FastTransformation)
        .copy(0, 0, std::min(part.width() * zoom, cell), std::min(part.height() * zoom, cell));
}

QImage sheet() {
    struct Column {
        const char* name;
        std::function<Bitmap(const Case&)> draw;
    };
    std::vector<Column> columns;
    const auto recorded = [](const Case& c) {
        return recordingOf(c.canvas, fittedLayer(Image::fromBitmap(c.picture), c.quad));
    };
    columns.push_back({"exact (seconds)", [&](const Case& c) { return renderReference(recorded(c)); }});
    columns.push_back({"Quillomat", [&](const Case& c) { return rasterize(recorded(c)); }});
    for (const KnownPeer& peer : knownPeers()) {
        columns.push_back({peer.title, [&peer](const Case& c) { return peer.warp(c.picture, c.quad, c.canvas); }});
    }
    const std::vector<Case> rows = cases();
    QImage all(titles + static_cast<int>(columns.size()) * (cell + margin),
               header + static_cast<int>(rows.size()) * (cell + margin), QImage::Format_RGB32);
    all.fill(Qt::white);
    QPainter painter(&all);
    QFont font;
    font.setPixelSize(15);
    painter.setFont(font);
    for (std::size_t x = 0; x < columns.size(); ++x) {
        const int left = titles + static_cast<int>(x) * (cell + margin);
        painter.drawText(QRect(left, 0, cell, header), Qt::AlignVCenter, QString::fromUtf8(columns[x].name));
        for (std::size_t y = 0; y < rows.size(); ++y) {
            const int top = header + static_cast<int>(y) * (cell + margin);
            if (x == 0) {
                painter.drawText(QRect(margin, top, titles - margin, cell), Qt::AlignVCenter, rows[y].name);
            }
            painter.drawImage(left, top, shown(columns[x].draw(rows[y]), rows[y].crop));
        }
    }
    return all;
}

} // namespace
} // namespace quillomat::benchmarks

int main(int count, char** arguments) {
    const QGuiApplication application(count, arguments);
    if (count != 2) {
        std::fprintf(stderr, "usage: %s OUTPUT.png\n", arguments[0]);
        return EXIT_FAILURE;
    }
    return quillomat::benchmarks::sheet().save(QString::fromLocal8Bit(arguments[1])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
