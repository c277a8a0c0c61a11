#include "hosts/qt/PhotoFolder.h"

#include "hosts/qt/Pictures.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QMetaObject>
#include <QPointer>
#include <QThreadPool>

#include <algorithm>
#include <tuple>

namespace quillomat {

namespace {

const QStringList pictureNames{QStringLiteral("*.png"),  QStringLiteral("*.jpg"),  QStringLiteral("*.jpeg"),
                               QStringLiteral("*.webp"), QStringLiteral("*.heic"), QStringLiteral("*.heif"),
                               QStringLiteral("*.avif")};

} // namespace

PhotoFolder::PhotoFolder(const QString& folder, Content content, QObject* parent)
    : QAbstractListModel(parent), content_(content) {
    open(folder);
}

int PhotoFolder::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries_.size());
}

QVariant PhotoFolder::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Entry& entry = entries_[index.row()];
    switch (role) {
    case fileName:
        return entry.name;
    case filePath:
        return entry.path;
    case isFolder:
        return entry.isFolder;
    case thumbnail:
        return entry.isFolder || content_ == Content::everything ? QString()
                                                                 : thumbnailAddress(entry.path, entry.modified);
    default:
        return {};
    }
}

QHash<int, QByteArray> PhotoFolder::roleNames() const {
    return {{fileName, "fileName"}, {filePath, "filePath"}, {isFolder, "isFolder"}, {thumbnail, "thumbnail"}};
}

QString PhotoFolder::folderName() const {
    const QString name = QDir(folder_).dirName();
    return name.isEmpty() ? folder_ : name;
}

bool PhotoFolder::canGoUp() const {
    return !folder_.isEmpty() && !QDir(folder_).isRoot();
}

void PhotoFolder::open(const QString& folder) {
    folder_ = folder;
    loading_ = true;
    emit folderChanged();
    emit loadingChanged();
    QThreadPool::globalInstance()->start(
        [self = QPointer<PhotoFolder>(this), content = content_, folder, number = ++listing_] {
            auto entries = list(folder, content);
            QMetaObject::invokeMethod(
                qApp,
                [self, number, entries = std::move(entries)] {
                    if (!self || self->listing_ != number) {
                        return;
                    }
                    self->beginResetModel();
                    self->entries_ = entries;
                    self->endResetModel();
                    self->loading_ = false;
                    emit self->loadingChanged();
                },
                Qt::QueuedConnection);
        });
}

void PhotoFolder::up() {
    QDir folder(folder_);
    if (folder.cdUp()) {
        open(folder.absolutePath());
    }
}

QList<PhotoFolder::Entry> PhotoFolder::list(const QString& folder, Content content) {
    QList<Entry> entries;
    if (folder.isEmpty()) {
        return entries;
    }
    const QDir directory(folder);
    const QStringList names = content == Content::pictures ? pictureNames : QStringList();
    const auto found = directory.entryInfoList(
        names, QDir::Files | QDir::AllDirs | QDir::NoDotAndDotDot | QDir::Readable, QDir::NoSort);
    entries.reserve(found.size());
    for (const QFileInfo& info : found) {
        entries.append(
            {info.fileName(), info.absoluteFilePath(), info.lastModified().toMSecsSinceEpoch(), info.isDir()});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (a.isFolder != b.isFolder) {
            return a.isFolder;
        }
        if (a.isFolder || a.modified == b.modified) {
            return a.name.localeAwareCompare(b.name) < 0;
        }
        return a.modified > b.modified;
    });
    return entries;
}

} // namespace quillomat
