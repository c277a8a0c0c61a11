#include "catalogue/Gallery.h"

#include "catalogue/CatalogueDocument.h"

namespace quillomat {

Value withImport(const Value& viewInfo, std::string_view definitionName) {
    const Value imported = viewInfo["Imported"];
    if (!imported.isObject()) {
        return viewInfo;
    }
    const Value images = imported["images"].withElement(Value::string(pictureNameOfImport(definitionName)));
    return viewInfo.withMember("Imported", imported.withMember("images", images));
}

std::vector<std::string> importsWithPictures(const CatalogueDocument& document) {
    std::vector<std::string> definitions = document.importedDefinitions();
    std::erase_if(definitions, [&](const std::string& definition) {
        return !document.pathOfDocument(pictureNameOfImport(definition));
    });
    return definitions;
}

std::vector<std::string> mockupNames(const Value& viewInfo, std::string_view row) {
    std::vector<std::string> names;
    const Value images = viewInfo[row]["images"];
    for (const Value& name : images.elements()) {
        if (name.isString()) {
            names.push_back(name.stringValue());
        }
    }
    return names;
}

} // namespace quillomat
