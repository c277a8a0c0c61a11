#include "hosts/qt/Screens.h"

#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "hosts/qt/Shell.h"

namespace quillomat {

namespace {

/// The text of the topmost box with a text that stands directly on the screen's view.
QString noticeOn(const View& root) {
    for (const auto& box : root.subviews()) {
        for (const auto& inside : box->subviews()) {
            if (const auto* text = dynamic_cast<const TextView*>(inside.get())) {
                return QString::fromStdString(text->text);
            }
        }
    }
    return {};
}

} // namespace

ScreenModel::ScreenModel(Shell& shell, std::shared_ptr<ViewController> controller)
    : shell_(shell), controller_(std::move(controller)) {}

void ScreenModel::refresh() {
    const auto& item = controller_->navigationItem;
    const auto titleOf = [this](const std::optional<BarButtonItem>& button) {
        return button ? shell_.text(QString::fromStdString(button->title)) : QString();
    };
    title_ = shell_.text(QString::fromStdString(controller_->title));
    left_ = titleOf(item.leftBarButtonItem);
    right_ = titleOf(item.rightBarButtonItem);
    emit barChanged();
    const QString notice = shell_.text(noticeOn(*controller_->view()));
    if (notice != notice_) {
        notice_ = notice;
        emit noticeChanged();
    }
}

void ScreenModel::pressLeft() {
    shell_.act([controller = controller_] {
        if (const auto button = controller->navigationItem.leftBarButtonItem; button && button->action) {
            button->action();
        }
    });
}

void ScreenModel::pressRight() {
    shell_.act([controller = controller_] {
        if (const auto button = controller->navigationItem.rightBarButtonItem; button && button->action) {
            button->action();
        }
    });
}

CatalogueRows::CatalogueRows(Shell& shell, std::shared_ptr<SelectionTableViewController> list, QObject* parent)
    : QAbstractListModel(parent), shell_(shell), list_(std::move(list)) {
    rows_.resize(list_->tableViewNumberOfRowsInSection(0));
}

CatalogueRows::~CatalogueRows() {
    forgetPictures();
}

void CatalogueRows::forgetPictures() {
    for (const Row& row : rows_) {
        shell_.pictures().remove(row.previewImage);
    }
}

int CatalogueRows::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QHash<int, QByteArray> CatalogueRows::roleNames() const {
    return {
        {typeLabel, "typeLabel"}, {sizeLabel, "sizeLabel"}, {descLabel, "descLabel"}, {previewImage, "previewImage"}};
}

qreal CatalogueRows::rowHeight() const {
    return list_->tableViewHeightForRowAtIndexPath({});
}

QVariant CatalogueRows::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Row& row = read(static_cast<std::size_t>(index.row()));
    switch (role) {
    case typeLabel:
        return row.typeLabel;
    case sizeLabel:
        return row.sizeLabel;
    case descLabel:
        return row.descLabel;
    case previewImage:
        return row.previewImage;
    default:
        return {};
    }
}

const CatalogueRows::Row& CatalogueRows::read(std::size_t index) const {
    Row& row = rows_[index];
    if (!row.isRead) {
        const auto cell = list_->tableViewCellForRowAtIndexPath({0, index});
        row = {true, QString::fromStdString(cell->typeLabel()->text), QString::fromStdString(cell->sizeLabel()->text),
               QString::fromStdString(cell->descLabel()->text), shell_.pictures().add(cell->previewImage()->image())};
    }
    return row;
}

void CatalogueRows::reload() {
    beginResetModel();
    forgetPictures();
    rows_.assign(list_->tableViewNumberOfRowsInSection(0), Row{});
    endResetModel();
}

void CatalogueRows::refresh() {
    if (rows_.size() != list_->tableViewNumberOfRowsInSection(0)) {
        reload();
    }
}

ListScreen::ListScreen(Shell& shell, const std::shared_ptr<SelectionTableViewController>& list)
    : ScreenModel(shell, list), list_(list), rows_(new CatalogueRows(shell, list, this)) {
    list_->tableView()->dataReloaded = [this] { rows_->reload(); };
}

ListScreen::~ListScreen() {
    list_->tableView()->dataReloaded = {};
}

void ListScreen::refresh() {
    ScreenModel::refresh();
    rows_->refresh();
}

void ListScreen::select(int row) {
    if (row >= 0 && row < rows_->rowCount()) {
        shell().act([list = list_, index = static_cast<std::size_t>(row)] {
            list->tableViewDidSelectRowAtIndexPath({0, index});
        });
    }
}

GalleryScreen::GalleryScreen(Shell& shell, const std::shared_ptr<ScrollerViewController>& gallery)
    : ScreenModel(shell, gallery), gallery_(gallery) {
    for (const auto& view : gallery_->stackView()->arrangedSubviews()) {
        const auto* cell = dynamic_cast<const ImageView*>(view.get());
        names_.append(QString::fromStdString(view->accessibilityIdentifier));
        pictures_.append(cell != nullptr ? shell.pictures().add(cell->image()) : QString());
    }
}

GalleryScreen::~GalleryScreen() {
    for (const QString& picture : pictures_) {
        shell().pictures().remove(picture);
    }
}

qreal GalleryScreen::pointsAcross() const {
    return gallery_->view()->bounds().size.width;
}

qreal GalleryScreen::cellHeight() const {
    const auto& cells = gallery_->stackView()->arrangedSubviews();
    return cells.empty() ? 0 : cells.front()->bounds().size.height;
}

qreal GalleryScreen::spacing() const {
    return gallery_->stackView()->spacing;
}

qreal GalleryScreen::margin() const {
    return gallery_->stackView()->layoutMargins.top;
}

void GalleryScreen::tap(int index) {
    const auto& cells = gallery_->stackView()->arrangedSubviews();
    if (index < 0 || static_cast<std::size_t>(index) >= cells.size()) {
        return;
    }
    shell().act([cell = cells[static_cast<std::size_t>(index)]] {
        for (const auto& recognizer : cell->gestureRecognizers) {
            if (const auto tap = std::dynamic_pointer_cast<TapGestureRecognizer>(recognizer)) {
                tap->recognize();
            }
        }
    });
}

} // namespace quillomat
