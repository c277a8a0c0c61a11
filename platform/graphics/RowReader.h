// Rows of a picture as they are decoded: for whoever needs each of them once.
#pragma once

#include "platform/graphics/Bitmap.h"

#include <cstdint>

namespace quillomat {

class RowReader {
public:
    RowReader() = default;
    virtual ~RowReader() = default;
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;

    [[nodiscard]] virtual PixelSize size() const = 0;
    /// Writes the next row, from the top: premultiplied RGBA. False where the document is damaged: then there are no
    /// more.
    [[nodiscard]] virtual bool read(std::uint8_t* out) = 0;
    /// Passes over the rest of the document, rows that nobody has read and all that follows. False where it is damaged.
    [[nodiscard]] virtual bool finish() = 0;
};

} // namespace quillomat
