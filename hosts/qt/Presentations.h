// The mirror of one alert, sheet or picker that stands before a screen.
#pragma once

#include "hosts/qt/Crop.h"
#include "hosts/qt/PhotoFolder.h"
#include "platform/views/Presentation.h"
#include "platform/views/ViewController.h"

#include <QByteArray>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>

#include <memory>

namespace quillomat {

class Shell;

/// Mirrors by identity: what it reports goes to the controller with the identity of what it shows, so that a late
/// report means nothing.
class PresentationModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString kind READ kind CONSTANT) // "alert", "sheet", "photos", "documents"
    Q_PROPERTY(QString title READ title CONSTANT)
    Q_PROPERTY(QString message READ message CONSTANT)
    Q_PROPERTY(QVariantList actions READ actions CONSTANT) // {title, isCancel}
    Q_PROPERTY(bool asksForText READ asksForText CONSTANT)
    Q_PROPERTY(bool isLeaving READ isLeaving NOTIFY isLeavingChanged)
    Q_PROPERTY(QObject* folder READ folder CONSTANT)
    Q_PROPERTY(QObject* crop READ crop NOTIFY cropChanged)
    Q_PROPERTY(QString trouble READ trouble NOTIFY troubleChanged)

public:
    PresentationModel(Shell& shell, std::shared_ptr<ViewController> screen, std::shared_ptr<Presentation> shown);
    ~PresentationModel() override;

    [[nodiscard]] PresentationId id() const { return shown_->id(); }
    [[nodiscard]] QString kind() const;
    [[nodiscard]] QString title() const;
    [[nodiscard]] QString message() const;
    [[nodiscard]] QVariantList actions() const;
    [[nodiscard]] bool asksForText() const;
    [[nodiscard]] bool isLeaving() const { return isLeaving_; }
    [[nodiscard]] QObject* folder() const { return folder_; }
    [[nodiscard]] QObject* crop() const { return crop_; }
    [[nodiscard]] const QString& trouble() const { return trouble_; }
    void setLeaving(bool leaving);

    Q_INVOKABLE void answer(int action, const QString& text = {});
    /// The user picked a file: a picture, or a document for a document picker.
    Q_INVOKABLE void choose(const QString& path);
    Q_INVOKABLE void chooseUrl(const QUrl& url);
    /// Of the formats in which something dropped or copied is offered, the best that is an encoded picture and can be
    /// taken here; empty for none.
    Q_INVOKABLE [[nodiscard]] QString pictureFormat(const QStringList& formats) const;
    /// The user picked a picture that is no file.
    Q_INVOKABLE void chooseData(const QByteArray& document);
    /// The editing step's answers.
    Q_INVOKABLE void finishCrop();
    Q_INVOKABLE void cancelCrop();
    Q_INVOKABLE void cancel();
    /// A file or a picture from the clipboard.
    Q_INVOKABLE void paste();
    /// The animation has ended.
    Q_INVOKABLE void dismissalEnded();

signals:
    void isLeavingChanged();
    void cropChanged();
    void troubleChanged();

private:
    [[nodiscard]] bool takesPictures() const { return photos_ != nullptr && !isLeaving_; }
    void deliver(const Image& picture);
    void setTrouble(const QString& trouble);
    void dropCrop();

    Shell& shell_;
    std::shared_ptr<ViewController> screen_;
    std::shared_ptr<Presentation> shown_;
    const AlertController* alert_; // one of these three
    const ImagePickerController* photos_;
    const DocumentPickerController* documents_;
    PhotoFolder* folder_ = nullptr;
    Crop* crop_ = nullptr;
    QString trouble_;
    bool isLeaving_ = false;
};

} // namespace quillomat
