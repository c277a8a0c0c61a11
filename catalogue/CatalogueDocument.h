// The catalogue document and the documents directory: where they are, how they are read, how pictures are found.
#pragma once

#include "platform/foundation/Value.h"
#include "platform/graphics/Image.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

struct Platform;

/// Reads afresh at every call: there is no cache, so a file that has just arrived counts at once. Whatever is missing,
/// broken or not allowed gives nothing, silently.
class CatalogueDocument {
public:
    explicit CatalogueDocument(const Platform& platform) : platform_(platform) {}

    /// The documents directory, without a trailing separator.
    [[nodiscard]] const std::string& mainDirectory() const;

    /// The catalogue: the stored copy when there is one, even a broken one, else the application's resource.
    [[nodiscard]] Value JSONFromFile() const;
    /// The JSON document of that name in the documents directory.
    [[nodiscard]] Value JSONFromDocument(std::string_view name) const;

    /// The picture among the application's image assets; no picture when there is none or it is unreadable.
    [[nodiscard]] Image imageNamed(std::string_view name) const;
    /// The picture of that file in the documents directory.
    [[nodiscard]] Image imageFromDocument(std::string_view name) const;
    /// The asset of that name, else the file of that name in the documents directory. Pictures are measured now and
    /// read when they are drawn.
    [[nodiscard]] Image pictureNamed(std::string_view name) const;

    /// The path of an existing entry of the documents directory. Names that would leave the directory name nothing, and
    /// so do symbolic links that lead out of it.
    [[nodiscard]] std::optional<std::string> pathOfDocument(std::string_view name) const;

    /// Names of the user's definition files, in the listing's order. Any name that contains ".cfg" is one.
    [[nodiscard]] std::vector<std::string> importedDefinitions() const;

private:
    const Platform& platform_;
};

/// A definition file's picture, which is also the imported mockup's name: every ".cfg" becomes ".png".
[[nodiscard]] std::string pictureNameOfImport(std::string_view definitionName);
/// The name a mockup's picture is looked up by: every "-large" is taken out.
[[nodiscard]] std::string lookupNameOfMockup(std::string_view mockupName);

} // namespace quillomat
