#include "hosts/qt/Pictures.h"

#include "platform/foundation/FileManager.h"

#include <QMutexLocker>
#include <QQuickTextureFactory>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>

namespace quillomat {

namespace {

constexpr auto addressPrefix = "image://core/";
constexpr QChar fileMark = u'f';

/// Where a picture's bytes come from, and how it fills the size that was asked for.
struct Request {
    Image image;  // either this
    QString path; // or a file
    QString key;
    QSize size;
    ImageLimits limits;
};

QSize fitted(const PixelSize& picture, const QSize& box, Qt::AspectRatioMode mode) {
    const QSize whole(picture.width, picture.height);
    const QSize scaled = whole.scaled(box, mode);
    // Never larger than the picture.
    return scaled.width() > whole.width() ? whole : scaled.expandedTo({1, 1});
}

/// R, G, B, A in memory becomes one number 0xAARRGGBB.
std::uint32_t turned(std::uint32_t pixel) {
    if constexpr (std::endian::native == std::endian::big) {
        return pixel >> 8 | pixel << 24;
    }
    return (pixel & 0xFF00FF00U) | (pixel & 0xFFU) << 16 | (pixel >> 16 & 0xFFU);
}

QImage scaledTo(const QImage& image, const QSize& size) {
    return image.size() == size ? image : image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

QImage decodeReduced(std::span<const std::byte> bytes, const Request& request, Qt::AspectRatioMode mode) {
    const auto header = readImageHeader(bytes, request.limits);
    if (!header) {
        return {};
    }
    const QSize target = fitted(header->size, request.size, mode);
    const auto decoded = decodeImageReduced(bytes, {target.width(), target.height()}, request.limits);
    return decoded ? scaledTo(toQImage(*decoded), target) : QImage();
}

QImage makePicture(const Request& request) {
    if (!request.image.source()->documentKey().isEmpty()) {
        const SharedDocument document = request.image.source()->document();
        return document ? decodeReduced(*document, request, Qt::KeepAspectRatio) : QImage();
    }
    const SharedBitmap bitmap = request.image.bitmap();
    if (!bitmap) {
        return {};
    }
    return scaledTo(toQImage(*bitmap), fitted(bitmap->size(), request.size, Qt::KeepAspectRatio));
}

QImage makeThumbnail(const Request& request) {
    const SystemFileManager files;
    const auto bytes = files.read(request.path.toStdString(), request.limits.fileBytes);
    if (!bytes) {
        return {};
    }
    const QImage covering = decodeReduced(*bytes, request, Qt::KeepAspectRatioByExpanding);
    const QSize cut = covering.size().boundedTo(request.size);
    return covering.copy((covering.width() - cut.width()) / 2, (covering.height() - cut.height()) / 2, cut.width(),
                         cut.height());
}

/// One picture under way. The engine takes it away when it has reported its end, called off or not.
class Response final : public QQuickImageResponse, public QRunnable {
public:
    Response(Request request, std::shared_ptr<ThumbnailCache> cache)
        : request_(std::move(request)), cache_(std::move(cache)) {
        setAutoDelete(false);
    }

    void run() override {
        if (!cancelled_) {
            image_ = cache_->find(request_.key);
            if (image_.isNull()) {
                image_ = request_.path.isEmpty() ? makePicture(request_) : makeThumbnail(request_);
                cache_->insert(request_.key, image_);
            }
        }
        emit finished();
    }
    void cancel() override { cancelled_ = true; }
    [[nodiscard]] QQuickTextureFactory* textureFactory() const override {
        return QQuickTextureFactory::textureFactoryForImage(image_);
    }
    [[nodiscard]] QString errorString() const override {
        return image_.isNull() && !cancelled_ ? QStringLiteral("no picture") : QString();
    }

private:
    Request request_;
    std::shared_ptr<ThumbnailCache> cache_;
    QImage image_;
    std::atomic<bool> cancelled_{false};
};

/// Two pictures of the same content are one in the cache, however often they were opened.
QString contentKey(const Image& image, const QString& id) {
    const DocumentKey key = image.source() ? image.source()->documentKey() : DocumentKey{};
    if (key.isEmpty()) {
        return id;
    }
    return QStringLiteral("%1-%2").arg(key.checksum, 0, 16).arg(key.length);
}

} // namespace

QString PictureRegistry::add(const Image& image) {
    if (!image) {
        return {};
    }
    const QMutexLocker lock(&mutex_);
    const QString id = QStringLiteral("p%1").arg(++last_);
    pictures_.insert(id, image);
    return QString::fromLatin1(addressPrefix) + id;
}

void PictureRegistry::remove(const QString& address) {
    const QMutexLocker lock(&mutex_);
    pictures_.remove(address.mid(static_cast<qsizetype>(std::char_traits<char>::length(addressPrefix))));
}

Image PictureRegistry::find(const QString& id) const {
    const QMutexLocker lock(&mutex_);
    return pictures_.value(id);
}

QString thumbnailAddress(const QString& path, std::int64_t modified) {
    const QByteArray name = path.toUtf8().toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals);
    return QString::fromLatin1(addressPrefix) + fileMark + QString::fromLatin1(name) + u'.' + QString::number(modified);
}

QImage ThumbnailCache::find(const QString& key) const {
    const QMutexLocker lock(&mutex_);
    const QImage* found = images_.object(key);
    return found != nullptr ? *found : QImage();
}

void ThumbnailCache::insert(const QString& key, const QImage& image) {
    if (image.isNull()) {
        return;
    }
    const QMutexLocker lock(&mutex_);
    images_.insert(key, new QImage(image), std::max<qsizetype>(1, image.sizeInBytes() / 1024));
}

CoreImageProvider::CoreImageProvider(std::shared_ptr<PictureRegistry> registry, ImageLimits limits)
    : registry_(std::move(registry)), limits_(limits) {
    pool_.setMaxThreadCount(2);
}

CoreImageProvider::~CoreImageProvider() {
    pool_.waitForDone();
}

QQuickImageResponse* CoreImageProvider::requestImageResponse(const QString& id, const QSize& requestedSize) {
    Request request{{}, {}, {}, requestedSize.expandedTo({1, 1}).boundedTo({4096, 4096}), limits_};
    if (id.startsWith(fileMark)) {
        const QByteArray name = id.mid(1, id.indexOf(u'.') - 1).toLatin1();
        request.path = QString::fromUtf8(QByteArray::fromBase64(name, QByteArray::Base64UrlEncoding));
        request.key = id;
    } else {
        request.image = registry_->find(id);
        request.key = contentKey(request.image, id);
    }
    request.key += QStringLiteral("@%1x%2").arg(request.size.width()).arg(request.size.height());
    const bool isKnown = request.image || !request.path.isEmpty();
    auto* response = new Response(std::move(request), cache_);
    if (!isKnown) {
        response->cancel();
    }
    pool_.start(response, ++served_);
    return response;
}

QImage toQImage(const Bitmap& bitmap, int top, int rows) {
    QImage image(bitmap.width(), rows, QImage::Format_ARGB32_Premultiplied);
    const auto width = static_cast<std::size_t>(bitmap.width());
    for (int y = 0; y < rows; ++y) {
        const std::uint8_t* const from = bitmap.row(top + y);
        std::uint8_t* const to = image.scanLine(y);
        for (std::size_t x = 0; x < width; ++x) {
            std::uint32_t pixel = 0;
            std::memcpy(&pixel, from + x * 4, 4);
            pixel = turned(pixel);
            std::memcpy(to + x * 4, &pixel, 4);
        }
    }
    return image;
}

QImage toQImage(const Bitmap& bitmap) {
    return toQImage(bitmap, 0, bitmap.height());
}

} // namespace quillomat
