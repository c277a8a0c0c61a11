#include "platform/graphics/codecs/Orientation.h"

#include <libexif/exif-data.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace quillomat::codecs {
namespace {

constexpr std::string_view exifHeader{"Exif\0\0", 6};
// A block in JPEG holds at most 64 KiB; PNG and WebP could announce more, which no camera writes.
constexpr std::size_t largestExif = std::size_t{1} << 20;

struct ExifDataUnref {
    void operator()(ExifData* data) const { exif_data_unref(data); }
};

/// Where upright pixel (0, 0) lies in what is stored, and how far one step to the right and one down go there.
struct Walk {
    std::ptrdiff_t start = 0;
    std::ptrdiff_t right = 0;
    std::ptrdiff_t down = 0;
};

Walk walkOver(PixelSize stored, Orientation orientation) {
    const std::ptrdiff_t row = stored.width;
    const std::ptrdiff_t lastColumn = stored.width - 1;
    const std::ptrdiff_t lastRow = row * (stored.height - 1);
    switch (orientation) {
    case Orientation::upright:
        break;
    case Orientation::mirrored:
        return {lastColumn, -1, row};
    case Orientation::upsideDown:
        return {lastRow + lastColumn, -1, -row};
    case Orientation::flipped:
        return {lastRow, 1, -row};
    case Orientation::transposed:
        return {0, row, 1};
    case Orientation::turnedLeft:
        return {lastRow, -row, 1};
    case Orientation::transversed:
        return {lastRow + lastColumn, -row, -1};
    case Orientation::turnedRight:
        return {lastColumn, row, -1};
    }
    return {0, 1, row};
}

void copyPixel(std::uint8_t* to, const std::uint8_t* from) {
    std::memcpy(to, from, 4);
}

} // namespace

Orientation orientationFromExif(std::span<const std::byte> exif) {
    if (exif.size() < 8 || exif.size() > largestExif) {
        return Orientation::upright;
    }
    std::vector<unsigned char> block;
    const auto* begin = reinterpret_cast<const unsigned char*>(exif.data());
    if (std::memcmp(begin, exifHeader.data(), exifHeader.size()) != 0) {
        block.assign(exifHeader.begin(), exifHeader.end());
    }
    block.insert(block.end(), begin, begin + exif.size());

    const std::unique_ptr<ExifData, ExifDataUnref> data(exif_data_new());
    if (!data) {
        return Orientation::upright;
    }
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(data.get(), block.data(), static_cast<unsigned int>(block.size()));
    const ExifEntry* entry = exif_content_get_entry(data->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (entry == nullptr || entry->format != EXIF_FORMAT_SHORT || entry->size < 2) {
        return Orientation::upright;
    }
    const int value = exif_get_short(entry->data, exif_data_get_byte_order(data.get()));
    return value >= 1 && value <= 8 ? static_cast<Orientation>(value) : Orientation::upright;
}

Bitmap turnUpright(Bitmap stored, Orientation orientation) {
    if (orientation == Orientation::upright || stored.size().isEmpty()) {
        return stored;
    }
    const Walk walk = walkOver(stored.size(), orientation);
    Bitmap upright(uprightSize(stored.size(), orientation));
    const std::uint8_t* from = stored.bytes().data();
    // In blocks, so that a walk down the stored columns finds its cache lines again on the next row.
    constexpr int block = 32;
    for (int top = 0; top < upright.height(); top += block) {
        const int bottom = std::min(top + block, upright.height());
        for (int left = 0; left < upright.width(); left += block) {
            const int right = std::min(left + block, upright.width());
            for (int y = top; y < bottom; ++y) {
                std::uint8_t* to = upright.row(y) + std::ptrdiff_t{left} * 4;
                const std::uint8_t* pixel = from + (walk.start + walk.down * y + walk.right * left) * 4;
                for (int x = left; x < right; ++x, to += 4, pixel += walk.right * 4) {
                    copyPixel(to, pixel);
                }
            }
        }
    }
    return upright;
}

} // namespace quillomat::codecs
