#include "catalogue/CatalogueListing.h"

#include "catalogue/CatalogueDocument.h"
#include "catalogue/Gallery.h"
#include "platform/foundation/Conversions.h"

#include <set>

namespace quillomat {

std::vector<ListedRow> listCatalogue(const CatalogueDocument& document) {
    std::set<std::string> importedNames;
    for (const std::string& definition : document.importedDefinitions()) {
        importedNames.insert(pictureNameOfImport(definition));
    }
    const Value catalogue = document.JSONFromFile();
    Value viewInfo = catalogue["viewInfo"];
    for (const std::string& definition : importsWithPictures(document)) {
        viewInfo = withImport(viewInfo, definition);
    }
    std::vector<ListedRow> rows;
    const Value items = catalogue["tableItems"];
    for (const Value& item : items.elements()) {
        ListedRow row{describe(item["typeLabel"]), {}};
        for (std::string& name : mockupNames(viewInfo, row.name)) {
            const bool isImported = importedNames.count(name) > 0;
            row.mockups.push_back({std::move(name), isImported});
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace quillomat
