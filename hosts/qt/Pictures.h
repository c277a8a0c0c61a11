// Pictures for the screens: decoded at display size off the interface's thread, kept within a bound.
#pragma once

#include "platform/graphics/Image.h"
#include "platform/graphics/ImageFile.h"

#include <QCache>
#include <QHash>
#include <QImage>
#include <QMutex>
#include <QQuickAsyncImageProvider>
#include <QString>
#include <QThreadPool>

#include <atomic>
#include <cstdint>
#include <memory>

namespace quillomat {

/// The core's pictures under names that a screen can ask the provider for, as long as the screen's model holds them.
class PictureRegistry {
public:
    /// The address of the picture; empty for no picture.
    [[nodiscard]] QString add(const Image& image);
    void remove(const QString& address);
    [[nodiscard]] Image find(const QString& id) const;

private:
    mutable QMutex mutex_;
    QHash<QString, Image> pictures_;
    std::uint64_t last_ = 0;
};

/// The address of a file's square thumbnail. The time is part of it, so that a changed file is another picture.
[[nodiscard]] QString thumbnailAddress(const QString& path, std::int64_t modified);

/// Small pictures by content and pixel size, the latest used of them, 32 MiB together.
class ThumbnailCache {
public:
    ThumbnailCache() : images_(32 * 1024) {}
    [[nodiscard]] QImage find(const QString& key) const;
    void insert(const QString& key, const QImage& image);

private:
    mutable QMutex mutex_;
    mutable QCache<QString, QImage> images_; // cost in KiB
};

/// "image://core/…". Requests need both sides of a size: core pictures are fitted into it, thumbnails cover it. The
/// newest request is served first, and one that was called off is not served at all.
class CoreImageProvider final : public QQuickAsyncImageProvider {
public:
    CoreImageProvider(std::shared_ptr<PictureRegistry> registry, ImageLimits limits);
    ~CoreImageProvider() override;
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& requestedSize) override;

private:
    std::shared_ptr<PictureRegistry> registry_;
    std::shared_ptr<ThumbnailCache> cache_ = std::make_shared<ThumbnailCache>();
    ImageLimits limits_;
    QThreadPool pool_;
    int served_ = 0;
};

/// A copy of these rows for the toolkit, in the one format that it uploads and shows without copying it again.
[[nodiscard]] QImage toQImage(const Bitmap& bitmap, int top, int rows);
[[nodiscard]] QImage toQImage(const Bitmap& bitmap);

} // namespace quillomat
