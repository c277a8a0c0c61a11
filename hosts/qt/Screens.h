// The mirrors of the screens on the stack: what a screen shows, and what the user did there.
#pragma once

#include "hosts/qt/Pictures.h"
#include "platform/views/Controls.h"
#include "platform/views/ViewController.h"

#include <QAbstractListModel>
#include <QObject>
#include <QRectF>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace quillomat {

class Shell;
class SelectionTableViewController;
class ScrollerViewController;
class EditingViewController;

/// What all screens have: a title, bar buttons, and small views that the core puts over them.
class ScreenModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind CONSTANT) // "list", "gallery", "editor"
    Q_PROPERTY(QString title READ title NOTIFY barChanged)
    Q_PROPERTY(QString leftTitle READ leftTitle NOTIFY barChanged)
    Q_PROPERTY(QString rightTitle READ rightTitle NOTIFY barChanged)
    Q_PROPERTY(qreal barFontSize READ barFontSize NOTIFY barChanged)
    Q_PROPERTY(QString notice READ notice NOTIFY noticeChanged) // the text of a box that stands over the screen

public:
    ScreenModel(Shell& shell, std::shared_ptr<ViewController> controller);

    [[nodiscard]] virtual QString kind() const = 0;
    [[nodiscard]] const QString& title() const { return title_; }
    [[nodiscard]] const QString& leftTitle() const { return left_; }
    [[nodiscard]] const QString& rightTitle() const { return right_; }
    [[nodiscard]] qreal barFontSize() const { return barFontSize_; }
    [[nodiscard]] const QString& notice() const { return notice_; }
    [[nodiscard]] const std::shared_ptr<ViewController>& controller() const { return controller_; }

    Q_INVOKABLE void pressLeft();
    Q_INVOKABLE void pressRight();
    /// Brings the mirror up to date with the controller.
    virtual void refresh();

signals:
    void barChanged();
    void noticeChanged();

protected:
    [[nodiscard]] Shell& shell() const { return shell_; }

private:
    Shell& shell_;
    std::shared_ptr<ViewController> controller_;
    QString title_;
    QString left_;
    QString right_;
    QString notice_;
    qreal barFontSize_ = 12;
};

/// The catalogue's rows, asked for one by one when they come into sight.
class CatalogueRows final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(qreal rowHeight READ rowHeight CONSTANT)

public:
    enum Role { typeLabel = Qt::UserRole + 1, sizeLabel, descLabel, previewImage };

    CatalogueRows(Shell& shell, std::shared_ptr<SelectionTableViewController> list, QObject* parent);
    ~CatalogueRows() override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;
    [[nodiscard]] qreal rowHeight() const;
    void reload();
    /// Reloads when the table now has another number of rows than is shown.
    void refresh();

private:
    struct Row {
        bool isRead = false;
        QString typeLabel, sizeLabel, descLabel, previewImage;
    };
    const Row& read(std::size_t row) const;
    void forgetPictures();

    Shell& shell_;
    std::shared_ptr<SelectionTableViewController> list_;
    mutable std::vector<Row> rows_;
};

class ListScreen final : public ScreenModel {
    Q_OBJECT
    Q_PROPERTY(QObject* rows READ rows CONSTANT)

public:
    ListScreen(Shell& shell, const std::shared_ptr<SelectionTableViewController>& list);
    ~ListScreen() override;
    [[nodiscard]] QString kind() const override { return QStringLiteral("list"); }
    [[nodiscard]] QObject* rows() const { return rows_; }
    Q_INVOKABLE void select(int row);
    void refresh() override;

private:
    std::shared_ptr<SelectionTableViewController> list_;
    CatalogueRows* rows_;
};

/// The column of a gallery: names, pictures, and the measures of its layout in the core's points.
class GalleryScreen final : public ScreenModel {
    Q_OBJECT
    Q_PROPERTY(QStringList names READ names CONSTANT)
    Q_PROPERTY(QStringList pictures READ pictures CONSTANT)
    Q_PROPERTY(qreal pointsAcross READ pointsAcross CONSTANT)
    Q_PROPERTY(qreal cellHeight READ cellHeight CONSTANT)
    Q_PROPERTY(qreal spacing READ spacing CONSTANT)
    Q_PROPERTY(qreal margin READ margin CONSTANT)

public:
    GalleryScreen(Shell& shell, const std::shared_ptr<ScrollerViewController>& gallery);
    ~GalleryScreen() override;
    [[nodiscard]] QString kind() const override { return QStringLiteral("gallery"); }
    [[nodiscard]] const QStringList& names() const { return names_; }
    [[nodiscard]] const QStringList& pictures() const { return pictures_; }
    [[nodiscard]] qreal pointsAcross() const;
    [[nodiscard]] qreal cellHeight() const;
    [[nodiscard]] qreal spacing() const;
    [[nodiscard]] qreal margin() const;
    Q_INVOKABLE void tap(int index);

private:
    std::shared_ptr<ScrollerViewController> gallery_;
    QStringList names_;
    QStringList pictures_;
};

} // namespace quillomat
