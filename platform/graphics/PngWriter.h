// Writes pictures as PNG: 8-bit, tagged sRGB; RGB where the picture is known to be opaque, RGBA otherwise.
#pragma once

#include "platform/foundation/FileDraft.h"
#include "platform/foundation/FileManager.h"
#include "platform/foundation/Result.h"
#include "platform/graphics/Image.h"

#include <functional>
#include <memory>

namespace quillomat {

enum class PngEffort { fast, best };

/// Rows are rasterised, filtered and deflated band by band, on several threads; the bytes do not depend on their
/// number. `threads` 0 means one per core. A recording is rasterised as its rows are written, never as a whole.
[[nodiscard]] Result<Bytes> encodePng(const Image& image, PngEffort effort = PngEffort::fast, int threads = 0);
[[nodiscard]] Result<Bytes> encodePng(const Bitmap& bitmap, PngEffort effort = PngEffort::fast, int threads = 0);

/// Begins a file for a document that is about to be encoded.
using DraftMaker = std::function<Result<std::shared_ptr<FileDraft>>()>;

/// The picture over the PNG document that is made of it now: the same pixels, holding nothing of what they were drawn
/// from, and the very bytes for whoever stores it. A picture that is over a PNG document already is given back.
/// With `makeDraft` the document is written into that file while it is encoded and is never in memory as a whole; where
/// the file cannot be begun or written, it is in memory after all, and its writer will learn why.
[[nodiscard]] Result<Image> asPngDocument(const Image& image, PngEffort effort = PngEffort::fast,
                                          const DraftMaker& makeDraft = {});
/// The unpublished file that holds the picture's document; null where none does.
[[nodiscard]] std::shared_ptr<FileDraft> draftOf(const Image& image);

} // namespace quillomat
