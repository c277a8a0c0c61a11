#include "hosts/desktop/FolderPhotoLibrary.h"

#include "platform/foundation/TemporaryFiles.h"
#include "platform/graphics/PngWriter.h"

#include <array>
#include <ctime>
#include <filesystem>
#include <unistd.h>

namespace quillomat {

namespace {

std::string localTime() {
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    localtime_r(&now, &parts);
    std::array<char, 32> text{};
    const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%d %H.%M.%S", &parts);
    return {text.data(), length};
}

} // namespace

Result<SharedDocument> pngDocument(const Image& image) {
    if (!image) {
        return Failure{"there is no picture"};
    }
    const auto document = asPngDocument(image);
    return document ? Result(document->source()->document()) : Failure{document.reason()};
}

FolderPhotoLibrary::FolderPhotoLibrary(std::string folder, FileManager& files, std::function<std::string()> now)
    : folder_(std::move(folder)), files_(files), now_(now ? std::move(now) : localTime) {}

FolderPhotoLibrary::~FolderPhotoLibrary() {
    for (auto& thread : asking_) {
        thread.join();
    }
}

void FolderPhotoLibrary::requestAuthorization(std::function<void(PhotoAuthorization)> answer) {
    asking_.emplace_back([folder = folder_, answer = std::move(answer)] {
        std::error_code error;
        if (!folder.empty()) {
            std::filesystem::create_directories(folder, error);
        }
        const bool usable = !folder.empty() && ::access(folder.c_str(), W_OK | X_OK) == 0;
        answer(usable ? PhotoAuthorization::authorized : PhotoAuthorization::denied);
    });
}

void FolderPhotoLibrary::writeToSavedPhotosAlbum(const Image& image) {
    const auto png = pngDocument(image);
    lastWrite_ = png ? store(**png) : Result<std::string>(Failure{png.reason()});
}

Result<std::string> FolderPhotoLibrary::store(std::span<const std::byte> png) {
    if (folder_.empty()) {
        return Failure{"there is no pictures folder"};
    }
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error) {
        return Failure{"cannot make the pictures folder " + folder_ + ": " + error.message()};
    }
    // The document is written under a hidden name first and then given the first free name; a name is taken by a hard
    // link, which never replaces, so two programs that save in the same second both keep their pictures.
    const std::string stem = "Mockup " + now_();
    const std::string draft = appendPathComponent(folder_, temporaryFileName());
    if (const auto written = files_.write(draft, png); !written) {
        return Failure{written.reason()};
    }
    Result<std::string> stored = Failure{"no free name for " + stem};
    for (int number = 1; number < 10000 && !stored; ++number) {
        const std::string name = stem + (number == 1 ? "" : " " + std::to_string(number)) + ".png";
        const std::string path = appendPathComponent(folder_, name);
        std::filesystem::create_hard_link(draft, path, error);
        if (!error) {
            stored = path;
        } else if (error == std::errc::operation_not_permitted || error == std::errc::operation_not_supported) {
            // File systems without hard links: the copy refuses an existing name just as well.
            if (files_.copy(draft, path)) {
                stored = path;
            }
        } else if (error != std::errc::file_exists) {
            stored = Failure{"cannot write " + path + ": " + error.message()};
            break;
        }
    }
    if (const auto removed = files_.remove(draft); !removed && stored) {
        return Failure{removed.reason()};
    }
    return stored;
}

} // namespace quillomat
