// Pictures for the codecs' tests: fixture files, corpora, and PNG documents built chunk by chunk.
#pragma once

#include "TinyPng.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/SparsePicture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace quillomat::testing {

inline Bytes readWhole(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const auto* begin = reinterpret_cast<const std::byte*>(text.data());
    return {begin, begin + text.size()};
}

inline std::string fixturePath(const std::string& name) {
    return std::string(QUILLOMAT_SOURCE_DIR) + "/tests/fixtures/pictures/" + name;
}

inline Bytes fixture(const std::string& name) {
    Bytes bytes = readWhole(fixturePath(name));
    EXPECT_FALSE(bytes.empty()) << name << " is missing";
    return bytes;
}

/// The folder of pictures made by others; may not be there.
inline std::filesystem::path corpora() {
    const char* named = std::getenv("QUILLOMAT_CORPORA"); // NOLINT(concurrency-mt-unsafe): tests set no variables
    return named != nullptr ? std::filesystem::path(named)
                            : std::filesystem::path(QUILLOMAT_SOURCE_DIR) / "../shared/corpora";
}

inline std::vector<std::filesystem::path> filesOf(const std::filesystem::path& folder, const std::string& extension) {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().extension() == extension) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline Rgba pixelAt(const Bitmap& bitmap, int x, int y) {
    const std::uint8_t* p = bitmap.row(y) + static_cast<std::size_t>(x) * 4;
    return {p[0], p[1], p[2], p[3]};
}

inline int largestDifference(const Rgba& a, const Rgba& b) {
    int largest = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        largest = std::max(largest, std::abs(int{a[i]} - int{b[i]}));
    }
    return largest;
}

inline int largestDifference(const Bitmap& a, const Bitmap& b) {
    int largest = 0;
    for (std::size_t i = 0; i < a.bytes().size(); ++i) {
        largest = std::max(largest, std::abs(int{a.bytes()[i]} - int{b.bytes()[i]}));
    }
    return largest;
}

inline Bitmap bitmapOf(const SparsePicture& picture) {
    Bitmap bitmap(picture.size());
    for (int y = 0; y < bitmap.height(); ++y) {
        picture.copy(y, 0, bitmap.width(), bitmap.row(y));
    }
    return bitmap;
}

struct PngChunk {
    std::string type;
    std::vector<std::uint8_t> data;
};

/// A PNG document from its chunks, with right checksums; "IDAT" chunks hold rows that are still to be wrapped in zlib.
inline std::vector<std::uint8_t> pngDocument(const std::vector<PngChunk>& chunks) {
    std::vector<std::uint8_t> out{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    for (const PngChunk& chunk : chunks) {
        tiny_png_detail::appendChunk(out, chunk.type,
                                     chunk.type == "IDAT" ? tiny_png_detail::storedZlib(chunk.data) : chunk.data);
    }
    return out;
}

inline std::span<const std::byte> asBytes(const std::vector<std::uint8_t>& data) {
    return std::as_bytes(std::span(data));
}

inline std::vector<std::uint8_t> bigEndian(std::uint32_t value) {
    std::vector<std::uint8_t> out;
    tiny_png_detail::appendBigEndian(out, value);
    return out;
}

inline PngChunk pngHeader(std::uint32_t width, std::uint32_t height, std::uint8_t depth, std::uint8_t colorType,
                          std::uint8_t interlace = 0) {
    std::vector<std::uint8_t> data;
    tiny_png_detail::appendBigEndian(data, width);
    tiny_png_detail::appendBigEndian(data, height);
    data.insert(data.end(), {depth, colorType, 0, 0, interlace});
    return {"IHDR", data};
}

/// An embedded profile under the name "p".
inline PngChunk profileChunk(const Bytes& profile) {
    std::vector<std::uint8_t> plain;
    for (const std::byte b : profile) {
        plain.push_back(std::to_integer<std::uint8_t>(b));
    }
    std::vector<std::uint8_t> data{'p', 0, 0};
    const std::vector<std::uint8_t> packed = tiny_png_detail::storedZlib(plain);
    data.insert(data.end(), packed.begin(), packed.end());
    return {"iCCP", data};
}

/// A 1 x 1 RGB picture with the given chunks between its header and its pixel.
inline std::vector<std::uint8_t> onePixelPng(std::uint8_t red, std::uint8_t green, std::uint8_t blue,
                                             std::vector<PngChunk> between) {
    std::vector<PngChunk> chunks{pngHeader(1, 1, 8, 2)};
    chunks.insert(chunks.end(), between.begin(), between.end());
    chunks.push_back({"IDAT", {0, red, green, blue}});
    chunks.push_back({"IEND", {}});
    return pngDocument(chunks);
}

} // namespace quillomat::testing
