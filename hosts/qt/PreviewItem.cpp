#include "hosts/qt/PreviewItem.h"

#include "editor/EditingViewController.h"
#include "hosts/qt/Pictures.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/views/Drawing.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMetaObject>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGSimpleTextureNode>
#include <QThreadPool>

#include <cmath>

namespace quillomat {

namespace {

constexpr double longestSide = 4096; // pixels; a larger item shows an enlarged picture

struct Drawn {
    QImage picture;
    std::vector<SharedBitmap> decoded;
    qreal milliseconds = 0;
};

Drawn draw(const Recording& recording) {
    QElapsedTimer clock;
    clock.start();
    Drawn drawn;
    for (const LayerDraw& layer : recording.draws()) {
        if (layer.picture) {
            drawn.decoded.push_back(layer.picture.bitmap());
        }
    }
    drawn.picture = toQImage(rasterize(recording));
    drawn.milliseconds = static_cast<qreal>(clock.nsecsElapsed()) / 1e6;
    return drawn;
}

} // namespace

PreviewItem::PreviewItem(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
    setAcceptedMouseButtons(Qt::LeftButton);
}

void PreviewItem::setScreen(QObject* screen) {
    auto* editor = qobject_cast<EditorScreen*>(screen);
    if (editor == screen_) {
        return;
    }
    if (screen_) {
        screen_->disconnect(this);
    }
    screen_ = editor;
    if (screen_) {
        connect(screen_, &EditorScreen::changed, this, &PreviewItem::redraw);
    }
    emit screenChanged();
    redraw();
}

void PreviewItem::geometryChange(const QRectF& now, const QRectF& former) {
    QQuickItem::geometryChange(now, former);
    if (now.size() != former.size()) {
        redraw();
    }
}

void PreviewItem::itemChange(ItemChange change, const ItemChangeData& value) {
    if (change == ItemDevicePixelRatioHasChanged || change == ItemSceneChange) {
        redraw();
    }
    QQuickItem::itemChange(change, value);
}

qreal PreviewItem::pixelRatio() const {
    const qreal ratio = window() != nullptr ? window()->effectiveDevicePixelRatio() : 1.0;
    const qreal longest = std::max(width(), height()) * ratio;
    return longest > longestSide ? ratio * longestSide / longest : ratio;
}

/// The viewport over whole device pixels.
Recording PreviewItem::record() const {
    const QRectF viewport = screen_->viewport();
    const qreal ratio = pixelRatio();
    const double scaleX = std::round(width() * ratio) / viewport.width();
    const double scaleY = std::round(height() * ratio) / viewport.height();
    BitmapContext context(Size{std::round(width() * ratio), std::round(height() * ratio)});
    const auto& root = screen_->editor()->view();
    const Size whole = root->bounds().size;
    drawViewHierarchy(
        *root, makeRect(-viewport.x() * scaleX, -viewport.y() * scaleY, whole.width * scaleX, whole.height * scaleY),
        context);
    return context.recording();
}

void PreviewItem::redraw() {
    isOutdated_ = true;
    if (!isWorking_) {
        start();
    }
}

void PreviewItem::start() {
    if (!screen_ || window() == nullptr || width() < 1 || height() < 1) {
        return;
    }
    isOutdated_ = false;
    isWorking_ = true;
    QThreadPool::globalInstance()->start([self = QPointer<PreviewItem>(this), recording = record()] {
        Drawn drawn = draw(recording);
        QMetaObject::invokeMethod(
            qApp,
            [self, drawn = std::move(drawn)]() mutable {
                if (!self) {
                    return;
                }
                const bool isFirst = self->picture_.isNull();
                self->picture_ = std::move(drawn.picture);
                self->decoded_ = std::move(drawn.decoded);
                self->isPictureNew_ = true;
                self->isWorking_ = false;
                self->update();
                emit self->drawn(drawn.milliseconds);
                if (isFirst) {
                    emit self->isDrawnChanged();
                }
                if (self->isOutdated_) {
                    self->start();
                }
            },
            Qt::QueuedConnection);
    });
}

QSGNode* PreviewItem::updatePaintNode(QSGNode* former, UpdatePaintNodeData* /*data*/) {
    auto* node = static_cast<QSGSimpleTextureNode*>(former);
    if (picture_.isNull()) {
        delete node;
        return nullptr;
    }
    if (node == nullptr) {
        node = new QSGSimpleTextureNode;
        node->setOwnsTexture(true);
        isPictureNew_ = true;
    }
    if (isPictureNew_) {
        node->setTexture(window()->createTextureFromImage(picture_, QQuickWindow::TextureHasAlphaChannel));
        node->setFiltering(QSGTexture::Linear);
        isPictureNew_ = false;
    }
    node->setRect(boundingRect());
    return node;
}

Point PreviewItem::toRoot(QPointF position) const {
    const QRectF viewport = screen_->viewport();
    return {viewport.x() + position.x() * viewport.width() / width(),
            viewport.y() + position.y() * viewport.height() / height()};
}

void PreviewItem::mousePressEvent(QMouseEvent* event) {
    grabbed_ = screen_ ? screen_->grab(toRoot(event->position())) : nullptr;
    last_ = event->position();
    setKeepMouseGrab(grabbed_ != nullptr);
    event->setAccepted(grabbed_ != nullptr);
}

void PreviewItem::mouseMoveEvent(QMouseEvent* event) {
    if (grabbed_ && screen_) {
        const Point now = toRoot(event->position());
        const Point before = toRoot(last_);
        last_ = event->position();
        screen_->drag(grabbed_, {now.x - before.x, now.y - before.y});
    }
}

void PreviewItem::mouseReleaseEvent(QMouseEvent* /*event*/) {
    grabbed_ = nullptr;
    setKeepMouseGrab(false);
}

void PreviewItem::mouseUngrabEvent() {
    grabbed_ = nullptr;
    setKeepMouseGrab(false);
}

} // namespace quillomat
