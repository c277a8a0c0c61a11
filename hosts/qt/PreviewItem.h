// The live preview: the core records its view tree, a worker turns the recording into pixels, the newest is shown.
#pragma once

#include "hosts/qt/EditorScreen.h"
#include "hosts/qt/PreviewPainter.h"

#include <QPointer>
#include <QQuickItem>

#include <memory>

namespace quillomat {

/// Draws the editor's viewport over the whole item, a pixel for each of the display's. At most one picture is under
/// way; when it is done the newest state follows, whatever lay between. Fingers on markers move them.
class PreviewItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(QObject* screen READ screen WRITE setScreen NOTIFY screenChanged)
    Q_PROPERTY(bool isDrawn READ isDrawn NOTIFY isDrawnChanged)

public:
    explicit PreviewItem(QQuickItem* parent = nullptr);

    [[nodiscard]] QObject* screen() const { return screen_; }
    void setScreen(QObject* screen);
    [[nodiscard]] bool isDrawn() const { return !picture_.isNull(); }

signals:
    void screenChanged();
    void isDrawnChanged();
    /// A new picture is ready, made in so many milliseconds on the worker.
    void drawn(qreal milliseconds);

protected:
    void geometryChange(const QRectF& now, const QRectF& former) override;
    void itemChange(ItemChange change, const ItemChangeData& value) override;
    QSGNode* updatePaintNode(QSGNode* former, UpdatePaintNodeData* data) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;

private:
    void redraw();
    void start();
    void show(PaintedPicture picture, qreal milliseconds);
    [[nodiscard]] qreal pixelRatio() const;
    [[nodiscard]] Point toRoot(QPointF position) const;

    QPointer<EditorScreen> screen_;
    std::shared_ptr<PreviewPainter> painter_ = std::make_shared<PreviewPainter>(); // the worker's, while there is one
    PaintedPicture picture_;
    bool isWorking_ = false;
    bool isOutdated_ = false;
    std::shared_ptr<View> grabbed_;
    QPointF last_;
};

} // namespace quillomat
