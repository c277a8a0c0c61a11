#include "hosts/qt/Crop.h"

#include <algorithm>
#include <cmath>

namespace quillomat {

namespace {

constexpr double fewestPixels = 32; // across the window, at the strongest magnification

} // namespace

Crop::Crop(Image image, PixelSize shape, QString source, QObject* parent)
    : QObject(parent)
    , image_(std::move(image))
    , source_(std::move(source))
    , base_(centredCrop(image_.pixelSize(), shape))
    , centerX_(base_.x + base_.width / 2.0)
    , centerY_(base_.y + base_.height / 2.0) {}

PixelRect Crop::rect() const {
    if (magnification_ <= 1 && std::lround(centerX_ - base_.width / 2.0) == base_.x &&
        std::lround(centerY_ - base_.height / 2.0) == base_.y) {
        return base_;
    }
    const PixelSize picture = image_.pixelSize();
    const int width = std::max(1, static_cast<int>(std::lround(base_.width / magnification_)));
    const int height = std::max(1, static_cast<int>(std::lround(base_.height / magnification_)));
    const int x = static_cast<int>(std::lround(centerX_ - width / 2.0));
    const int y = static_cast<int>(std::lround(centerY_ - height / 2.0));
    return {std::clamp(x, 0, picture.width - width), std::clamp(y, 0, picture.height - height), width, height};
}

QRectF Crop::part() const {
    const PixelRect now = rect();
    const PixelSize picture = image_.pixelSize();
    return {static_cast<qreal>(now.x) / picture.width, static_cast<qreal>(now.y) / picture.height,
            static_cast<qreal>(now.width) / picture.width, static_cast<qreal>(now.height) / picture.height};
}

QString Crop::description() const {
    const PixelRect now = rect();
    return QStringLiteral("%1,%2,%3,%4").arg(now.x).arg(now.y).arg(now.width).arg(now.height);
}

void Crop::move(qreal x, qreal y) {
    centerX_ -= x * base_.width / magnification_;
    centerY_ -= y * base_.height / magnification_;
    keepInside();
}

void Crop::zoom(qreal factor, qreal x, qreal y) {
    const double strongest = std::max(1.0, std::min(base_.width, base_.height) / fewestPixels);
    const double former = magnification_;
    magnification_ = std::clamp(former * (std::isfinite(factor) && factor > 0 ? factor : 1), 1.0, strongest);
    const double shift = 1 / former - 1 / magnification_;
    centerX_ += (x - 0.5) * base_.width * shift;
    centerY_ += (y - 0.5) * base_.height * shift;
    keepInside();
}

void Crop::keepInside() {
    const PixelSize picture = image_.pixelSize();
    const double halfWidth = base_.width / magnification_ / 2;
    const double halfHeight = base_.height / magnification_ / 2;
    centerX_ = std::clamp(centerX_, halfWidth, std::max(halfWidth, picture.width - halfWidth));
    centerY_ = std::clamp(centerY_, halfHeight, std::max(halfHeight, picture.height - halfHeight));
    emit changed();
}

} // namespace quillomat
