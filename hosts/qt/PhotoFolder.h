// A folder as a picker shows it: the folders in it, then its files, newest first.
#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QString>

#include <cstdint>

namespace quillomat {

/// Listed off the interface's thread; what was asked for last is what is shown.
class PhotoFolder final : public QAbstractListModel {
    Q_OBJECT
    Q_PROPERTY(QString folder READ folder NOTIFY folderChanged)
    Q_PROPERTY(QString folderName READ folderName NOTIFY folderChanged)
    Q_PROPERTY(bool canGoUp READ canGoUp NOTIFY folderChanged)
    Q_PROPERTY(bool loading READ isLoading NOTIFY loadingChanged)
    Q_PROPERTY(int count READ count NOTIFY loadingChanged)

public:
    enum Role { fileName = Qt::UserRole + 1, filePath, isFolder, thumbnail };
    enum class Content { pictures, everything };

    PhotoFolder(const QString& folder, Content content, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    [[nodiscard]] const QString& folder() const { return folder_; }
    [[nodiscard]] QString folderName() const;
    [[nodiscard]] bool canGoUp() const;
    [[nodiscard]] bool isLoading() const { return loading_; }
    [[nodiscard]] int count() const { return rowCount(); }

    Q_INVOKABLE void open(const QString& folder);
    Q_INVOKABLE void up();

signals:
    void folderChanged();
    void loadingChanged();

private:
    struct Entry {
        QString name;
        QString path;
        std::int64_t modified = 0;
        bool isFolder = false;
    };

    [[nodiscard]] static QList<Entry> list(const QString& folder, Content content);

    Content content_;
    QString folder_;
    QList<Entry> entries_;
    int listing_ = 0; // the number of the latest listing asked for
    bool loading_ = false;
};

} // namespace quillomat
