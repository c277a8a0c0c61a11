#include "catalogue/CatalogueDocument.h"

#include "platform/foundation/Conversions.h"
#include "platform/foundation/Trace.h"
#include "platform/views/Platform.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace quillomat {

namespace {

/// Whether an existing path, with all its links followed, lies below `directory`.
bool liesInside(const std::string& path, const std::string& directory) {
    std::error_code error;
    const auto realDirectory = std::filesystem::canonical(directory, error);
    if (error) {
        return false;
    }
    const auto realPath = std::filesystem::canonical(path, error);
    if (error) {
        return false;
    }
    const auto [end, rest] =
        std::mismatch(realDirectory.begin(), realDirectory.end(), realPath.begin(), realPath.end());
    return end == realDirectory.end() && rest != realPath.end();
}

Value readJson(const FileManager& files, const std::string& path) {
    const auto bytes = files.read(path, JsonLimits{}.bytes);
    if (!bytes) {
        return {};
    }
    auto document = parseJson(*bytes);
    return document ? std::move(document).value() : Value{};
}

Image readPicture(const Platform& platform, const std::optional<std::string>& path) {
    if (!path) {
        return {};
    }
    auto picture = imageReadWhenDrawn(platform.files, *path, platform.imageLimits);
    return picture ? std::move(picture).value() : Image{};
}

} // namespace

const std::string& CatalogueDocument::mainDirectory() const {
    return platform_.documentsDirectory;
}

Value CatalogueDocument::JSONFromFile() const {
    const trace::Span span("load catalogue");
    if (const auto stored = pathOfDocument("main.json")) {
        return readJson(platform_.files, *stored);
    }
    const auto resource = platform_.bundle.pathForResource("main", "json");
    return resource ? readJson(platform_.files, *resource) : Value{};
}

Value CatalogueDocument::JSONFromDocument(std::string_view name) const {
    const auto path = pathOfDocument(name);
    return path ? readJson(platform_.files, *path) : Value{};
}

Image CatalogueDocument::imageNamed(std::string_view name) const {
    return readPicture(platform_, platform_.bundle.pathForImageNamed(name));
}

Image CatalogueDocument::imageFromDocument(std::string_view name) const {
    return readPicture(platform_, pathOfDocument(name));
}

Image CatalogueDocument::pictureNamed(std::string_view name) const {
    Image asset = imageNamed(name);
    return asset ? asset : imageFromDocument(name);
}

std::optional<std::string> CatalogueDocument::pathOfDocument(std::string_view name) const {
    if (!isPlainFileName(name) || mainDirectory().empty()) {
        return std::nullopt;
    }
    std::string path = appendPathComponent(mainDirectory(), name);
    if (!platform_.files.fileExists(path) || !liesInside(path, mainDirectory())) {
        return std::nullopt;
    }
    return path;
}

std::vector<std::string> CatalogueDocument::importedDefinitions() const {
    const auto entries = platform_.files.contentsOfDirectory(mainDirectory());
    std::vector<std::string> definitions;
    if (entries) {
        std::copy_if(entries->begin(), entries->end(), std::back_inserter(definitions),
                     [](const std::string& name) { return name.find(".cfg") != std::string::npos; });
    }
    return definitions;
}

std::string pictureNameOfImport(std::string_view definitionName) {
    return replaceAll(definitionName, ".cfg", ".png");
}

std::string lookupNameOfMockup(std::string_view mockupName) {
    return replaceAll(mockupName, "-large", "");
}

} // namespace quillomat
