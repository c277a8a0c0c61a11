// A picture over a document that lies in a file which is not published yet.
#pragma once

#include "platform/foundation/FileDraft.h"
#include "platform/graphics/ImageFile.h"

#include <memory>

namespace quillomat::codecs {

/// The draft lives as long as the picture. Its bytes are read again, and compared with the key, when they are wanted.
[[nodiscard]] Image imageOverDraft(std::shared_ptr<FileDraft> draft, const DocumentKey& key, const ImageHeader& header,
                                   const ImageLimits& limits, double scale);

} // namespace quillomat::codecs
