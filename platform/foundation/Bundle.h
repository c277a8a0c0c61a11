// The application's resources: a read-only folder with the catalogue and the pictures it names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillomat {

class Bundle {
public:
    virtual ~Bundle() = default;
    /// The path of the resource named `name`.`type`; nothing when there is none. Names that would leave the resources
    /// folder name nothing.
    [[nodiscard]] virtual std::optional<std::string> pathForResource(std::string_view name,
                                                                     std::string_view type) const = 0;
    /// The path of an image asset: the exact name first, then the name with ".png".
    [[nodiscard]] virtual std::optional<std::string> pathForImageNamed(std::string_view name) const = 0;
};

/// A folder on disk: `main.json` and friends at its top; pictures in `images/`.
class DirectoryBundle final : public Bundle {
public:
    explicit DirectoryBundle(std::string directory);
    [[nodiscard]] std::optional<std::string> pathForResource(std::string_view name,
                                                             std::string_view type) const override;
    [[nodiscard]] std::optional<std::string> pathForImageNamed(std::string_view name) const override;

private:
    std::string directory_;
};

} // namespace quillomat
