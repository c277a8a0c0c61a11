#include "hosts/qt/PreviewItem.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMetaObject>
#include <QMouseEvent>
#include <QQuickWindow>
#include <QSGSimpleTextureNode>
#include <QThreadPool>

#include <algorithm>
#include <cmath>

namespace quillomat {

namespace {

constexpr double longestSide = 4096; // pixels; a larger item shows an enlarged picture

/// One strip of the picture, and the image that its texture was made of.
class StripNode final : public QSGSimpleTextureNode {
public:
    StripNode() {
        setOwnsTexture(true);
        setFiltering(QSGTexture::Linear);
    }

    void show(const QImage& image, QQuickWindow& window) {
        if (shown_ != image.cacheKey()) {
            setTexture(window.createTextureFromImage(image, QQuickWindow::TextureHasAlphaChannel));
            shown_ = image.cacheKey();
        }
    }

private:
    qint64 shown_ = 0;
};

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
    const qreal ratio = pixelRatio();
    const QSize pixels(qRound(width() * ratio), qRound(height() * ratio));
    QThreadPool::globalInstance()->start(
        [self = QPointer<PreviewItem>(this), painter = painter_, recording = recordViewport(*screen_, pixels)] {
            QElapsedTimer clock;
            clock.start();
            PaintedPicture picture = painter->paint(recording);
            const qreal milliseconds = static_cast<qreal>(clock.nsecsElapsed()) / 1e6;
            QMetaObject::invokeMethod(
                qApp,
                [self, picture = std::move(picture), milliseconds]() mutable {
                    if (self) {
                        self->show(std::move(picture), milliseconds);
                    }
                },
                Qt::QueuedConnection);
        });
}

void PreviewItem::show(PaintedPicture picture, qreal milliseconds) {
    const bool isFirst = picture_.isNull();
    picture_ = std::move(picture);
    isWorking_ = false;
    update();
    emit drawn(milliseconds);
    if (isFirst) {
        emit isDrawnChanged();
    }
    if (isOutdated_) {
        start();
    }
}

QSGNode* PreviewItem::updatePaintNode(QSGNode* former, UpdatePaintNodeData* /*data*/) {
    if (picture_.isNull()) {
        delete former;
        return nullptr;
    }
    QSGNode* node = former != nullptr ? former : new QSGNode;
    const auto count = static_cast<int>(picture_.strips.size());
    while (node->childCount() > count) {
        delete node->lastChild();
    }
    const qreal across = width() / picture_.size.width();
    const qreal down = height() / picture_.size.height();
    auto* next = static_cast<StripNode*>(node->firstChild());
    for (std::size_t i = 0; i < picture_.strips.size(); ++i) {
        const QRect place = picture_.place(i);
        StripNode* strip = next != nullptr ? next : new StripNode;
        strip->show(picture_.strips[i], *window());
        strip->setRect(QRectF(place.x() * across, place.y() * down, place.width() * across, place.height() * down));
        if (next == nullptr) {
            node->appendChildNode(strip); // with its texture, which is looked at as soon as it is there
        }
        next = static_cast<StripNode*>(strip->nextSibling());
    }
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
