// Small valid PNG documents for tests, made without any codec: stored (uncompressed) deflate blocks.
#pragma once

#include "platform/foundation/FileManager.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

namespace quillomat::testing {

using Rgba = std::array<std::uint8_t, 4>;

namespace tiny_png_detail {

inline std::uint32_t crc32(const std::vector<std::uint8_t>& data) {
    std::uint32_t crc = 0xFFFFFFFFU;
    for (const std::uint8_t byte : data) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

inline void appendBigEndian(std::vector<std::uint8_t>& out, std::uint32_t value) {
    for (const unsigned shift : {24U, 16U, 8U, 0U}) {
        out.push_back(static_cast<std::uint8_t>((value >> shift) & 0xFFU));
    }
}

inline void appendChunk(std::vector<std::uint8_t>& out, std::string_view type, const std::vector<std::uint8_t>& body) {
    std::vector<std::uint8_t> checked(type.begin(), type.end());
    checked.insert(checked.end(), body.begin(), body.end());
    appendBigEndian(out, static_cast<std::uint32_t>(body.size()));
    out.insert(out.end(), checked.begin(), checked.end());
    appendBigEndian(out, crc32(checked));
}

inline std::vector<std::uint8_t> storedZlib(const std::vector<std::uint8_t>& data) {
    std::vector<std::uint8_t> out{0x78, 0x01};
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const std::uint8_t byte : data) {
        a = (a + byte) % 65521U;
        b = (b + a) % 65521U;
    }
    std::size_t begin = 0;
    do {
        const std::size_t length = std::min<std::size_t>(65535, data.size() - begin);
        out.push_back(begin + length == data.size() ? 1 : 0);
        for (const std::size_t word : {length, length ^ 0xFFFFU}) {
            out.push_back(static_cast<std::uint8_t>(word & 0xFFU));
            out.push_back(static_cast<std::uint8_t>(word >> 8U));
        }
        const auto first = data.begin() + static_cast<std::ptrdiff_t>(begin);
        out.insert(out.end(), first, first + static_cast<std::ptrdiff_t>(length));
        begin += length;
    } while (begin < data.size());
    appendBigEndian(out, (b << 16U) | a);
    return out;
}

} // namespace tiny_png_detail

/// An RGBA PNG of the given size; `pixel(x, y)` is straight (not premultiplied).
inline Bytes tinyPng(int width, int height, const std::function<Rgba(int, int)>& pixel) {
    using namespace tiny_png_detail;
    std::vector<std::uint8_t> rows;
    for (int y = 0; y < height; ++y) {
        rows.push_back(0);
        for (int x = 0; x < width; ++x) {
            const Rgba colour = pixel(x, y);
            rows.insert(rows.end(), colour.begin(), colour.end());
        }
    }
    std::vector<std::uint8_t> header;
    appendBigEndian(header, static_cast<std::uint32_t>(width));
    appendBigEndian(header, static_cast<std::uint32_t>(height));
    header.insert(header.end(), {8, 6, 0, 0, 0});
    std::vector<std::uint8_t> out{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    appendChunk(out, "IHDR", header);
    appendChunk(out, "IDAT", storedZlib(rows));
    appendChunk(out, "IEND", {});
    Bytes bytes(out.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        bytes[i] = std::byte{out[i]};
    }
    return bytes;
}

/// The same in one colour.
inline Bytes tinyPng(int width, int height, Rgba colour = {255, 0, 0, 255}) {
    return tinyPng(width, height, [colour](int, int) { return colour; });
}

} // namespace quillomat::testing
