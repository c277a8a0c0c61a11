// A background that is never there as a whole: its rows are decoded when canvas rows that show them are to be drawn,
// and let go of behind those.
//
// Kept are rows of the picture; or, where that is less memory, the canvas's rows, into which the picture's are
// stretched while the cache still has them. Both give the bits that the whole picture would give.
#pragma once

#include "platform/graphics/PlanarPicture.h"
#include "platform/graphics/RowReader.h"
#include "platform/graphics/raster/Sampler.h"

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <span>
#include <vector>

namespace quillomat::raster {

struct RowRange {
    int begin = 0;
    int end = 0;
};

/// Rows [begin, end) of many; the memory of those that are dropped serves those that come.
class RowWindow {
public:
    RowWindow() = default;
    RowWindow(int rows, std::size_t rowBytes) : rowBytes_(rowBytes), rows_(static_cast<std::size_t>(rows)) {}

    [[nodiscard]] int end() const { return end_; }
    [[nodiscard]] std::size_t bytes() const { return static_cast<std::size_t>(end_ - begin_) * rowBytes_; }
    /// Where each row lies that is there. The address stays the same.
    [[nodiscard]] const std::uint8_t* const* each() const { return rows_.data(); }
    /// Makes room for row `end`.
    [[nodiscard]] std::uint8_t* append();
    void dropBefore(int row);

private:
    std::size_t rowBytes_ = 0;
    int begin_ = 0;
    int end_ = 0;
    std::vector<const std::uint8_t*> rows_;
    std::vector<PixelMemory> memory_;
    std::vector<std::uint8_t*> free_;
};

/// Makes the rows that are kept, each of them once, from the top.
class RowMaker {
public:
    RowMaker() = default;
    virtual ~RowMaker() = default;
    RowMaker(const RowMaker&) = delete;
    RowMaker& operator=(const RowMaker&) = delete;

    /// False where the document is damaged.
    [[nodiscard]] virtual bool make(int row, std::uint8_t* out) = 0;
    /// Passes over the rest of the document. False where it is damaged.
    [[nodiscard]] virtual bool finish() = 0;
};

/// What may be kept for later: enough for one thread to go on decoding while others draw, and little beside the
/// program.
constexpr std::size_t bytesKeptAhead = std::size_t{4} << 20;

/// Thread-safe. Each canvas row is drawn once.
class StreamedPicture {
public:
    /// Null for draws that are not along the axes, upright and smooth, or that need the picture halved beforehand.
    [[nodiscard]] static std::shared_ptr<StreamedPicture> make(std::unique_ptr<RowReader> reader, const LayerDraw& draw,
                                                               PixelSize canvas, const Kernels& kernels);
    /// For draws that are stretched from planes.
    [[nodiscard]] static std::shared_ptr<StreamedPicture>
    make(std::unique_ptr<PlaneReader> reader, const LayerDraw& draw, PixelSize canvas, const Kernels& kernels);

    /// The draw's pixels; to be asked only for rows that are claimed. It must not outlive this.
    [[nodiscard]] std::unique_ptr<Sampler> makeSampler(const SampledArea& area) const;

    /// Canvas rows [first, first + count) are there until they are released. Whoever claims decodes what is missing, in
    /// the order of the picture, or waits for another who does: rows can be claimed in any order, by any number of
    /// threads, but those that lie before are all kept until they have been drawn.
    void claim(int first, int count);
    void release(int first, int count) noexcept;

    /// Decodes while there is room to keep it and nobody else decodes, until somebody says that it is enough.
    void runAhead(const std::atomic<bool>& isEnough);

    /// Decodes what nobody has claimed and the rest of the document. False where it is damaged: then nothing that was
    /// drawn is of any use.
    [[nodiscard]] bool finish();

    /// The most that was kept at a time.
    [[nodiscard]] std::size_t mostBytes() const;

private:
    StreamedPicture(std::unique_ptr<RowReader> reader, const AxisMap& map, PixelSize canvas, const Kernels& kernels);
    /// Keeps the canvas's rows.
    StreamedPicture(std::unique_ptr<RowMaker> maker, PixelSize canvas, const Kernels& kernels);
    /// The kept rows that a canvas row takes.
    [[nodiscard]] RowRange keptFor(int y) const;
    [[nodiscard]] int keptCount() const { return keepsCanvas_ ? canvas_.height : picture_.height; }
    void makeRows(std::unique_lock<std::mutex>& lock, int count);
    [[nodiscard]] int appendRows(std::span<std::uint8_t*> rows);
    void dropDrawn() noexcept;

    AxisMap map_;
    PixelSize picture_; // where its rows are kept
    PixelSize canvas_;
    const Kernels& kernels_;
    bool isCopied_ = false;
    bool keepsCanvas_ = false;
    std::vector<RowRange> pictureRows_; // that each canvas row takes, where they are kept
    std::unique_ptr<RowMaker> maker_;   // only for whoever is making rows

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    RowWindow kept_;
    bool isMaking_ = false;
    int made_ = 0; // kept rows that are complete
    bool isDamaged_ = false;
    std::vector<bool> isDrawn_;
    int firstNotDrawn_ = 0;
    std::size_t mostBytes_ = 0;
};

/// A claim for as long as it lives.
class ClaimedRows {
public:
    ClaimedRows(const std::vector<std::shared_ptr<StreamedPicture>>& pictures, int first, int count);
    ~ClaimedRows();
    ClaimedRows(const ClaimedRows&) = delete;
    ClaimedRows& operator=(const ClaimedRows&) = delete;

private:
    const std::vector<std::shared_ptr<StreamedPicture>>& pictures_;
    std::size_t claimed_ = 0;
    int first_;
    int count_;
};

} // namespace quillomat::raster
