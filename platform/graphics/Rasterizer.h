// Turns recordings into pixels, in bands of rows, on any number of threads, with the same bits.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/Recording.h"

#include <cstdint>
#include <memory>
#include <span>

namespace quillomat {

/// Prepared once per recording; `rows` may then be called from several threads at once.
class Rasterizer {
public:
    explicit Rasterizer(const Recording& recording);
    ~Rasterizer();
    Rasterizer(const Rasterizer&) = delete;
    Rasterizer& operator=(const Rasterizer&) = delete;

    /// Writes rows [first, first + count) as packed premultiplied RGBA into `out` (count x width x 4 bytes), replacing
    /// what is there.
    void rows(int first, int count, std::span<std::uint8_t> out) const;

private:
    struct Plan;
    std::unique_ptr<Plan> plan_;
};

/// The whole canvas; `threads` 0 means one per core.
[[nodiscard]] Bitmap rasterize(const Recording& recording, int threads = 0);

} // namespace quillomat
