// Says what is wrong with a mockup's definition before anybody installs it.
#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/Value.h"
#include "platform/graphics/Bitmap.h"

#include <functional>
#include <string>
#include <vector>

namespace quillomat {

/// The size of a picture the application would find, or the reason why it finds none.
using PictureSize = std::function<Result<PixelSize>(const std::string& name)>;

/// One reason a line, none when the definition is sound: canvas and frame have extents within the limits, the corners
/// of each screen enclose an area without crossing, frame and glare pictures are there, and a "-large" name has the
/// entry that its preview is taken from.
[[nodiscard]] std::vector<std::string> problemsOfDefinition(const std::string& mockup, const Value& definitions,
                                                            const PictureSize& pictureSize);

} // namespace quillomat
