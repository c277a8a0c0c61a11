#include "hosts/desktop/UserFolders.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace quillomat {

namespace {

/// Variables that must hold an absolute path do not count when they hold anything else.
std::optional<std::string> absolutePath(const Environment& environment, const std::string& name) {
    auto value = environment(name);
    if (!value || value->empty() || value->front() != '/') {
        return std::nullopt;
    }
    return value;
}

/// The path behind `XDG_PICTURES_DIR="$HOME/..."` in a user-dirs.dirs file, as xdg-user-dirs writes it.
std::optional<std::string> picturesEntry(const std::string& file, const std::string& home) {
    std::ifstream in(file);
    const std::string key = "XDG_PICTURES_DIR=\"";
    const std::string homePrefix = "$HOME/";
    for (std::string line; std::getline(in, line);) {
        const auto end = line.rfind('"');
        if (line.rfind(key, 0) != 0 || end == std::string::npos || end < key.size()) {
            continue;
        }
        const std::string value = line.substr(key.size(), end - key.size());
        if (value.rfind(homePrefix, 0) == 0) {
            return home + "/" + value.substr(homePrefix.size());
        }
        if (!value.empty() && value.front() == '/') {
            return value;
        }
    }
    return std::nullopt;
}

} // namespace

Environment processEnvironment() {
    return [](const std::string& name) -> std::optional<std::string> {
        const char* value = std::getenv(name.c_str());
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
}

std::string defaultDocumentsDirectory(const Environment& environment) {
    if (const auto data = absolutePath(environment, "XDG_DATA_HOME")) {
        return *data + "/quillomat";
    }
    const auto home = absolutePath(environment, "HOME");
    return home ? *home + "/.local/share/quillomat" : std::string();
}

std::string picturesDirectory(const Environment& environment) {
    if (const auto pictures = absolutePath(environment, "XDG_PICTURES_DIR")) {
        return *pictures;
    }
    const auto home = absolutePath(environment, "HOME");
    if (!home) {
        return {};
    }
    const auto config = absolutePath(environment, "XDG_CONFIG_HOME").value_or(*home + "/.config");
    return picturesEntry(config + "/user-dirs.dirs", *home).value_or(*home + "/Pictures");
}

std::string resourcesDirectory(const std::string& programPath) {
    namespace fs = std::filesystem;
    std::error_code ignored;
    const fs::path folder = fs::path(programPath).parent_path();
    const fs::path installed = folder.parent_path() / "share" / "quillomat";
    if (fs::exists(installed / "main.json", ignored)) {
        return installed.string();
    }
    const fs::path source = folder.parent_path().parent_path().parent_path() / "resources";
    return fs::exists(source / "main.json", ignored) ? source.string() : std::string();
}

std::string runningProgram() {
    std::error_code error;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

} // namespace quillomat
