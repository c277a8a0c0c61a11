// The editing step of a picked background: which whole pixels of the picture stand in the crop window.
#pragma once

#include "platform/graphics/Cropping.h"
#include "platform/graphics/Image.h"

#include <QObject>
#include <QRectF>
#include <QString>

namespace quillomat {

/// Starts with the largest rectangle about the centre. Movements and zooms are given in fractions of the crop window,
/// whatever size that has on a screen, and never leave the picture.
class Crop final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString source READ source CONSTANT)
    Q_PROPERTY(qreal shape READ shape CONSTANT)      // width to height of the window
    Q_PROPERTY(QRectF part READ part NOTIFY changed) // of the picture, 0 to 1
    Q_PROPERTY(QString description READ description NOTIFY changed)

public:
    Crop(Image image, PixelSize shape, QString source, QObject* parent = nullptr);

    [[nodiscard]] const QString& source() const { return source_; }
    [[nodiscard]] qreal shape() const { return static_cast<qreal>(base_.width) / base_.height; }
    [[nodiscard]] QRectF part() const;
    [[nodiscard]] QString description() const;
    [[nodiscard]] PixelRect rect() const;
    [[nodiscard]] const Image& image() const { return image_; }

    Q_INVOKABLE void move(qreal x, qreal y);
    /// `factor` above 1 shows less of the picture; the point (x, y) of the window stays where it is.
    Q_INVOKABLE void zoom(qreal factor, qreal x = 0.5, qreal y = 0.5);

signals:
    void changed();

private:
    void keepInside();

    Image image_;
    QString source_;
    PixelRect base_;
    double magnification_ = 1;
    double centerX_ = 0; // pixels of the picture
    double centerY_ = 0;
};

} // namespace quillomat
