// A picture as photographs are stored: one plane of luma and two of chroma, which may be halved.
#pragma once

#include "platform/graphics/Bitmap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quillomat {

/// Y, Cb and Cr of JFIF: full range, chroma about 128.
enum class Plane : std::uint8_t { luma, blueChroma, redChroma };
constexpr std::size_t planeCount = 3;

/// How planes lie. A sample of chroma stands for `across` x `down` of luma, in their middle; between samples chroma
/// runs three quarters to one quarter, and beyond the outermost ones it stays what it is.
struct PlanarLayout {
    PixelSize size; // of the luma
    PixelRect part; // of it that is the picture; chroma beside it shines in
    int across = 1;
    int down = 1;
    int rowsTogether = 16; // of the luma, that are decoded together
    int lumaRoom = 0;      // samples that rows have room for
    int chromaRoom = 0;

    friend bool operator==(const PlanarLayout&, const PlanarLayout&) = default;
    [[nodiscard]] PixelSize chromaSize() const {
        return {(size.width + across - 1) / across, (size.height + down - 1) / down};
    }
    [[nodiscard]] int rowsTogetherOf(Plane plane) const {
        return plane == Plane::luma ? rowsTogether : rowsTogether / down;
    }
    [[nodiscard]] int roomOf(Plane plane) const { return plane == Plane::luma ? lumaRoom : chromaRoom; }
};

/// Rows of each plane that come together.
using PlaneStrip = std::array<std::vector<std::uint8_t*>, planeCount>;

/// The planes as they are decoded, from the top.
class PlaneReader {
public:
    PlaneReader() = default;
    virtual ~PlaneReader() = default;
    PlaneReader(const PlaneReader&) = delete;
    PlaneReader& operator=(const PlaneReader&) = delete;

    [[nodiscard]] virtual const PlanarLayout& layout() const = 0;
    /// Writes the next rows of each plane; what those below the last one hold does not matter. False where the document
    /// is damaged: then there are no more.
    [[nodiscard]] virtual bool read(const PlaneStrip& strip) = 0;
    /// Passes over the rest of the document. False where it is damaged.
    [[nodiscard]] virtual bool finish() = 0;
};

/// Rows of the planes: all that the part needs, or those that have come and have not gone yet. Immutable once it is
/// shared.
class PlanarPicture {
public:
    /// Rows begin where the cache's lines do, and have room up to the end of one.
    static constexpr std::size_t alignment = 64;

    /// Memory is taken for so many rows of the luma at once, at least those that are decoded together.
    explicit PlanarPicture(const PlanarLayout& layout, int rowsAtOnce = 1);

    [[nodiscard]] const PlanarLayout& layout() const { return layout_; }
    [[nodiscard]] PixelSize size() const { return {layout_.part.width, layout_.part.height}; }
    /// Where each row lies that is there.
    [[nodiscard]] const std::uint8_t* const* rows(Plane plane) const {
        return rows_[static_cast<std::size_t>(plane)].data();
    }
    /// The rows of the luma that have come, and the chroma beside them.
    [[nodiscard]] int end() const { return strips_ * layout_.rowsTogether; }
    /// The next rows. False where the document is damaged.
    [[nodiscard]] bool append(PlaneReader& reader);
    /// Forgets rows of the luma that lie above, and the chroma beside them; their memory serves those that come.
    void dropBefore(int row);

private:
    void takeMemory();

    PlanarLayout layout_;
    int stripsAtOnce_ = 1;
    int firstStrip_ = 0;
    int strips_ = 0;
    std::array<std::vector<const std::uint8_t*>, planeCount> rows_;
    std::vector<PixelMemory> memory_;
    std::vector<PlaneStrip> kept_; // from `firstStrip_` on
    std::vector<PlaneStrip> free_;
};

/// All of the planes that the part needs; null where the document is damaged.
[[nodiscard]] std::shared_ptr<const PlanarPicture> planarPictureOf(PlaneReader& reader);

} // namespace quillomat
