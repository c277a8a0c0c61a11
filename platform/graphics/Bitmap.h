// Decoded pixels: 8-bit RGBA, premultiplied, sRGB, rows from the top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>

namespace quillomat {

struct PixelSize {
    int width = 0;
    int height = 0;

    friend constexpr bool operator==(const PixelSize&, const PixelSize&) = default;
    [[nodiscard]] constexpr bool isEmpty() const { return width <= 0 || height <= 0; }
    [[nodiscard]] constexpr std::uint64_t area() const {
        return isEmpty() ? 0 : static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    }
};

/// Whole pixels, from the picture's top-left corner.
struct PixelRect {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    friend constexpr bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// Zeroed bytes. Large ones lie in large pages where the system has them: those are touched several times faster.
class PixelMemory {
public:
    PixelMemory() = default;
    /// Throws `std::bad_alloc` where there is not that much.
    explicit PixelMemory(std::size_t size);
    PixelMemory(const PixelMemory& other);
    PixelMemory(PixelMemory&& other) noexcept : size_(std::exchange(other.size_, 0)), data_(std::move(other.data_)) {}
    PixelMemory& operator=(PixelMemory other) noexcept {
        std::swap(size_, other.size_);
        std::swap(data_, other.data_);
        return *this;
    }
    ~PixelMemory() = default;

    [[nodiscard]] std::uint8_t* data() const { return data_.get(); }
    [[nodiscard]] std::size_t size() const { return size_; }

private:
    struct Free {
        std::size_t pagesOf = 0; // bytes asked for, where they are in large pages of their own
        void operator()(std::uint8_t* data) const;
    };
    std::size_t size_ = 0;
    // NOLINTNEXTLINE(cppcoreguidelines-avoid-c-arrays): memory from calloc
    std::unique_ptr<std::uint8_t[], Free> data_{nullptr, Free{}};
};

/// Mutable while its maker fills it, shared as `shared_ptr<const Bitmap>` ever after. Rows are packed: stride is four
/// bytes times the width.
class Bitmap {
public:
    Bitmap() = default;
    /// Transparent black. The caller has checked the size against its limit.
    explicit Bitmap(PixelSize size);

    [[nodiscard]] PixelSize size() const { return size_; }
    [[nodiscard]] int width() const { return size_.width; }
    [[nodiscard]] int height() const { return size_.height; }
    [[nodiscard]] std::size_t stride() const { return static_cast<std::size_t>(size_.width) * 4; }
    [[nodiscard]] std::span<std::uint8_t> bytes() { return {memory_.data(), byteCount()}; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {memory_.data(), byteCount()}; }
    [[nodiscard]] std::uint8_t* row(int y) { return memory_.data() + static_cast<std::size_t>(y) * stride(); }
    [[nodiscard]] const std::uint8_t* row(int y) const {
        return memory_.data() + static_cast<std::size_t>(y) * stride();
    }
    /// The pixels and the room behind them, for those who fill the bitmap in place: a byte a row and a wide vector
    /// more.
    [[nodiscard]] std::span<std::uint8_t> bytesWithRoom() { return {memory_.data(), memory_.size()}; }
    /// Whether every pixel's alpha is 255: looks at all of them.
    [[nodiscard]] bool isOpaque() const;

    /// The same size and pixels; the room behind them is nobody's.
    friend bool operator==(const Bitmap& a, const Bitmap& b);

private:
    [[nodiscard]] std::size_t byteCount() const { return size_.area() * 4; }

    PixelSize size_;
    PixelMemory memory_;
};

/// The pixels of a part, which lies inside.
[[nodiscard]] Bitmap partOf(const Bitmap& bitmap, const PixelRect& part);

using SharedBitmap = std::shared_ptr<const Bitmap>;

} // namespace quillomat
