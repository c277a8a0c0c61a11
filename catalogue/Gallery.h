// Which mockups a gallery shows: the catalogue's own names, then the user's imports.
#pragma once

#include "platform/foundation/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

class CatalogueDocument;

/// `viewInfo` with the definition file's picture name appended to the images of "Imported". A catalogue without that
/// entry takes no imports and comes back unchanged; an entry without images gets some. A name that the catalogue lists
/// already is listed twice then.
[[nodiscard]] Value withImport(const Value& viewInfo, std::string_view definitionName);

/// The definition files of the documents directory whose pictures are there too, in the listing's order.
[[nodiscard]] std::vector<std::string> importsWithPictures(const CatalogueDocument& document);

/// The mockup names of one row, in gallery order. Elements that are no strings name nothing and are left out.
[[nodiscard]] std::vector<std::string> mockupNames(const Value& viewInfo, std::string_view row);

} // namespace quillomat
