#include "hosts/qt/Presentations.h"

#include "hosts/qt/Shell.h"
#include "platform/graphics/ImageFile.h"
#include "platform/views/Platform.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <span>

namespace quillomat {

PresentationModel::PresentationModel(Shell& shell, std::shared_ptr<ViewController> screen,
                                     std::shared_ptr<Presentation> shown)
    : shell_(shell)
    , screen_(std::move(screen))
    , shown_(std::move(shown))
    , alert_(dynamic_cast<const AlertController*>(shown_.get()))
    , photos_(dynamic_cast<const ImagePickerController*>(shown_.get()))
    , documents_(dynamic_cast<const DocumentPickerController*>(shown_.get())) {
    if (photos_ != nullptr) {
        folder_ = new PhotoFolder(shell_.picturesFolder(), PhotoFolder::Content::pictures, this);
    } else if (documents_ != nullptr) {
        folder_ = new PhotoFolder(shell_.downloadsFolder(), PhotoFolder::Content::everything, this);
    }
}

PresentationModel::~PresentationModel() {
    dropCrop();
}

QString PresentationModel::kind() const {
    if (alert_ != nullptr) {
        return alert_->style() == AlertStyle::alert ? QStringLiteral("alert") : QStringLiteral("sheet");
    }
    return photos_ != nullptr ? QStringLiteral("photos") : QStringLiteral("documents");
}

QString PresentationModel::title() const {
    return alert_ != nullptr ? shell_.text(QString::fromStdString(alert_->title())) : QString();
}

QString PresentationModel::message() const {
    return alert_ != nullptr ? shell_.text(QString::fromStdString(alert_->message())) : QString();
}

QVariantList PresentationModel::actions() const {
    QVariantList actions;
    if (alert_ == nullptr) {
        return actions;
    }
    for (const AlertAction& action : alert_->actions()) {
        actions.append(QVariantMap{{QStringLiteral("title"), shell_.text(QString::fromStdString(action.title))},
                                   {QStringLiteral("isCancel"), action.style == ActionStyle::cancel}});
    }
    return actions;
}

bool PresentationModel::asksForText() const {
    return alert_ != nullptr && !alert_->textFields().empty();
}

void PresentationModel::setLeaving(bool leaving) {
    if (isLeaving_ != leaving) {
        isLeaving_ = leaving;
        emit isLeavingChanged();
    }
}

void PresentationModel::answer(int action, const QString& text) {
    if (action < 0) {
        return;
    }
    shell_.act([screen = screen_, id = id(), index = static_cast<std::size_t>(action), text = text.toStdString()] {
        screen->answerAlert(id, index, text);
    });
}

void PresentationModel::chooseUrl(const QUrl& url) {
    if (url.isLocalFile()) {
        choose(url.toLocalFile());
    }
}

void PresentationModel::choose(const QString& path) {
    if (documents_ != nullptr) {
        shell_.act(
            [screen = screen_, id = id(), file = path.toStdString()] { screen->answerDocumentPicker(id, file); });
        return;
    }
    if (!takesPictures()) {
        return;
    }
    Platform& platform = shell_.platform();
    const auto picture = imageFromFile(platform.files, path.toStdString(), platform.imageLimits);
    if (!picture) {
        setTrouble(tr("%1 cannot be opened").arg(path.section(u'/', -1)));
        return;
    }
    deliver(*picture);
}

void PresentationModel::deliver(const Image& picture) {
    setTrouble({});
    if (!photos_->allowsEditing) {
        shell_.act([screen = screen_, id = id(), picture] { screen->answerImagePicker(id, {picture, {}}); });
        return;
    }
    dropCrop();
    crop_ = new Crop(picture, shell_.canvasOf(*screen_), shell_.pictures().add(picture), this);
    emit cropChanged();
}

void PresentationModel::finishCrop() {
    if (crop_ == nullptr) {
        return;
    }
    const PickedMedia media{crop_->image(), croppedImage(crop_->image(), crop_->rect())};
    shell_.act([screen = screen_, id = id(), media] { screen->answerImagePicker(id, media); });
}

void PresentationModel::cancelCrop() {
    dropCrop();
    emit cropChanged();
}

void PresentationModel::dropCrop() {
    if (crop_ != nullptr) {
        shell_.pictures().remove(crop_->source());
        crop_->deleteLater();
        crop_ = nullptr;
    }
}

void PresentationModel::cancel() {
    shell_.act([screen = screen_, id = id()] { screen->cancelPicker(id); });
}

QString PresentationModel::pictureFormat(const QStringList& formats) const {
    static const std::array known{QStringLiteral("image/png"),  QStringLiteral("image/jpeg"),
                                  QStringLiteral("image/webp"), QStringLiteral("image/heic"),
                                  QStringLiteral("image/heif"), QStringLiteral("image/avif")};
    const auto offered =
        std::find_if(known.begin(), known.end(), [&](const QString& format) { return formats.contains(format); });
    return takesPictures() && offered != known.end() ? *offered : QString();
}

void PresentationModel::chooseData(const QByteArray& document) {
    if (!takesPictures()) {
        return;
    }
    const auto bytes = std::as_bytes(std::span(document.constData(), static_cast<std::size_t>(document.size())));
    const auto picture = imageFromBytes(Bytes(bytes.begin(), bytes.end()), shell_.platform().imageLimits);
    if (!picture) {
        setTrouble(tr("This picture cannot be opened"));
        return;
    }
    deliver(*picture);
}

void PresentationModel::paste() {
    const QMimeData* content = QGuiApplication::clipboard()->mimeData();
    if (content == nullptr || alert_ != nullptr || isLeaving_) {
        return;
    }
    const QList<QUrl> urls = content->urls();
    if (!urls.isEmpty() && urls.constFirst().isLocalFile()) {
        chooseUrl(urls.constFirst());
        return;
    }
    if (const QString format = pictureFormat(content->formats()); !format.isEmpty()) {
        chooseData(content->data(format));
        return;
    }
    // Pixels without a document, as programs of the same process or of other systems offer them.
    const auto image = qvariant_cast<QImage>(content->imageData());
    if (!image.isNull()) {
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        chooseData(png);
    }
}

void PresentationModel::dismissalEnded() {
    shell_.perform([screen = screen_, id = id()] { screen->dismissalEnded(id); });
}

void PresentationModel::setTrouble(const QString& trouble) {
    if (trouble_ != trouble) {
        trouble_ = trouble;
        emit troubleChanged();
    }
}

} // namespace quillomat
