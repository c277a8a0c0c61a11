#include "platform/foundation/Bundle.h"

#include "platform/foundation/FileManager.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace quillomat {

namespace {

constexpr std::string_view pictureFolder = "images";

std::optional<std::string> fileNamed(const std::string& folder, const std::string& name) {
    if (!isPlainFileName(name)) {
        return std::nullopt;
    }
    std::string path = appendPathComponent(folder, name);
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        return std::nullopt;
    }
    return path;
}

} // namespace

DirectoryBundle::DirectoryBundle(std::string directory) : directory_(std::move(directory)) {}

std::optional<std::string> DirectoryBundle::pathForResource(std::string_view name, std::string_view type) const {
    std::string file(name);
    if (!type.empty()) {
        file.append(".").append(type);
    }
    // Without its name, "" of type "png" would be the hidden file ".png".
    if (name.empty()) {
        return std::nullopt;
    }
    if (auto path = fileNamed(directory_, file)) {
        return path;
    }
    return fileNamed(appendPathComponent(directory_, pictureFolder), file);
}

std::optional<std::string> DirectoryBundle::pathForImageNamed(std::string_view name) const {
    if (name.empty()) {
        return std::nullopt;
    }
    const std::string folder = appendPathComponent(directory_, pictureFolder);
    if (auto path = fileNamed(folder, std::string(name))) {
        return path;
    }
    return fileNamed(folder, std::string(name) + ".png");
}

} // namespace quillomat
