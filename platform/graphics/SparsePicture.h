// A decoded picture in runs along its rows, for overlays that are mostly empty or of one colour.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/PixelBlocks.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace quillomat {

/// Pixels [left, right) of a row.
struct Columns {
    int left = 0;
    int right = 0;

    [[nodiscard]] int length() const { return right - left; }
    friend constexpr bool operator==(const Columns&, const Columns&) = default;
};

/// The same pixels as a bitmap of premultiplied RGBA would hold. Immutable; safe to share.
class SparsePicture {
public:
    enum class Content : std::uint8_t {
        empty,  // nothing but transparent black
        opaque, // every alpha is 255
        mixed
    };
    struct Stretch {
        int right = 0;
        Content content = Content::mixed;
        const std::uint8_t* pixels = nullptr; // in place, where they are stored as they are
    };

    [[nodiscard]] PixelSize size() const { return size_; }
    [[nodiscard]] bool isOpaque() const { return isOpaque_; }
    /// What lies from column x on, as far as it is alike; right is at most `right`.
    [[nodiscard]] Stretch stretchAt(int y, int x, int right) const;
    /// Writes pixels [left, right) of row y.
    void copy(int y, int left, int right, std::uint8_t* out) const;
    /// The longest opaque stretch of row y.
    [[nodiscard]] Columns widestOpaque(int y) const { return rows_[static_cast<std::size_t>(y)].widestOpaque; }
    /// Bytes that it takes.
    [[nodiscard]] std::size_t byteCount() const;

private:
    friend class SparsePictureMaker;

    /// Overlays are light and shadow for the most part: one byte to a pixel is enough for those.
    enum class Storage : std::uint8_t { oneColor, white, black, whole };
    struct Run {
        std::uint32_t right = 0;
        std::uint32_t value = 0; // the colour, or where the bytes begin
        Storage storage = Storage::oneColor;
        bool isOpaque = false;
    };
    struct Row {
        std::size_t firstRun = 0;
        std::size_t runCount = 0;
        const std::uint8_t* bytes = nullptr;
        Columns widestOpaque;
    };

    [[nodiscard]] static Content contentOf(const Run& run);
    [[nodiscard]] const Row& row(int y) const { return rows_[static_cast<std::size_t>(y)]; }
    /// The run that column x lies in.
    [[nodiscard]] const Run* runAt(const Row& row, int x) const;

    PixelSize size_;
    bool isOpaque_ = false;
    std::vector<Run> runs_;
    std::vector<Row> rows_;
    std::vector<PixelMemory> memory_;
};

/// Takes a picture row by row.
class SparsePictureMaker {
public:
    explicit SparsePictureMaker(PixelSize size);

    void addRow(const std::uint8_t* pixels);
    /// Another row like the last one; the first row is empty.
    void repeatRow();
    /// Whether the last row was empty; before the first row it was.
    [[nodiscard]] bool lastRowIsEmpty() const { return lastRowIsEmpty_; }
    /// All rows have been added.
    [[nodiscard]] std::shared_ptr<const SparsePicture> finish();

private:
    using Run = SparsePicture::Run;
    using Storage = SparsePicture::Storage;
    void makeRuns();
    void addLooseBlocks(std::size_t first, std::size_t last);
    void addRun(std::size_t lastBlock, std::uint32_t kinds, std::uint32_t color);
    [[nodiscard]] const std::uint8_t* store(const std::uint8_t* pixels);
    [[nodiscard]] std::uint8_t* roomFor(std::size_t bytes);
    [[nodiscard]] Columns widestOpaque() const;

    std::shared_ptr<SparsePicture> picture_;
    std::vector<PixelBlock> blocks_;
    std::vector<Run> row_;
    std::uint8_t* free_ = nullptr;
    std::size_t freeBytes_ = 0;
    bool lastRowIsEmpty_ = true;
};

} // namespace quillomat
