// The mirror of the editor: its tools, and the part of its view tree that the preview shows.
#pragma once

#include "hosts/qt/Screens.h"

#include <QStringList>
#include <QVariantList>

namespace quillomat {

class EditorScreen final : public ScreenModel {
    Q_OBJECT
    Q_PROPERTY(bool leftEnabled READ leftEnabled NOTIFY changed)
    Q_PROPERTY(bool rightEnabled READ rightEnabled NOTIFY changed)
    Q_PROPERTY(bool backgroundEnabled READ backgroundEnabled NOTIFY changed)
    Q_PROPERTY(bool glareEnabled READ glareEnabled NOTIFY changed)
    Q_PROPERTY(bool saveEnabled READ saveEnabled NOTIFY changed)
    Q_PROPERTY(bool showsGlare READ showsGlare NOTIFY changed)
    Q_PROPERTY(bool isMeasuring READ isMeasuring CONSTANT)
    Q_PROPERTY(QRectF viewport READ viewport CONSTANT)   // of the preview, in the root view's points
    Q_PROPERTY(QRectF canvas READ canvas NOTIFY changed) // the picture's place, in the same points
    Q_PROPERTY(QVariantList captions READ captions NOTIFY captionsChanged)
    Q_PROPERTY(int captionCount READ captionCount NOTIFY captionCountChanged)

public:
    enum Tool { Left, Right, Background, Glare, Save };
    Q_ENUM(Tool)

    EditorScreen(Shell& shell, const std::shared_ptr<EditingViewController>& editor);
    [[nodiscard]] QString kind() const override { return QStringLiteral("editor"); }

    [[nodiscard]] bool leftEnabled() const;
    [[nodiscard]] bool rightEnabled() const;
    [[nodiscard]] bool backgroundEnabled() const;
    [[nodiscard]] bool glareEnabled() const;
    [[nodiscard]] bool saveEnabled() const;
    [[nodiscard]] bool showsGlare() const;
    [[nodiscard]] bool isMeasuring() const;
    [[nodiscard]] QRectF viewport() const;
    [[nodiscard]] QRectF canvas() const;
    /// The small buttons that the core laid out over the picture: {text, x, y, width, height, size} in the root's
    /// points.
    [[nodiscard]] const QVariantList& captions() const { return captions_; }
    [[nodiscard]] int captionCount() const { return static_cast<int>(captions_.size()); }
    [[nodiscard]] const std::shared_ptr<EditingViewController>& editor() const { return editor_; }

    Q_INVOKABLE void press(int tool);
    Q_INVOKABLE void pressCaption(int index);
    void refresh() override;
    /// A finger at `point` of the root: what it would move, if anything.
    [[nodiscard]] std::shared_ptr<View> grab(Point point) const;
    void drag(const std::shared_ptr<View>& grabbed, Point delta);

signals:
    void changed();
    void captionsChanged();
    void captionCountChanged();

private:
    void readCaptions();

    std::shared_ptr<EditingViewController> editor_;
    std::vector<std::shared_ptr<Button>> panel_;
    QVariantList captions_;
};

} // namespace quillomat
