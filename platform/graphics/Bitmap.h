// Decoded pixels: 8-bit RGBA, premultiplied, sRGB, rows from the top.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

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
    [[nodiscard]] std::span<std::uint8_t> bytes() { return bytes_; }
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return bytes_; }
    [[nodiscard]] std::uint8_t* row(int y) { return bytes_.data() + static_cast<std::size_t>(y) * stride(); }
    [[nodiscard]] const std::uint8_t* row(int y) const { return bytes_.data() + static_cast<std::size_t>(y) * stride(); }
    /// Whether every pixel's alpha is 255: looks at all of them.
    [[nodiscard]] bool isOpaque() const;

    friend bool operator==(const Bitmap&, const Bitmap&) = default;

private:
    PixelSize size_;
    std::vector<std::uint8_t> bytes_;
};

using SharedBitmap = std::shared_ptr<const Bitmap>;

} // namespace quillomat
