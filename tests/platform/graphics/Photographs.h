// Photographs as they come from files, and canvases that they are stretched over.
#pragma once

#include "DrawnPictures.h"
#include "JpegDocuments.h"
#include "codecs/TestPictures.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ImageFile.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <filesystem>
#include <string>
#include <vector>

namespace quillomat::testing {

inline Image photograph(PixelSize size, const JpegKind& kind = {}) {
    return imageFromBytes(jpegOf(photographLike(size), kind)).value();
}

/// One photograph stored in each of the eight orientations, the upright one first; none without the corpus.
inline std::vector<Image> photographInEachOrientation() {
    const std::filesystem::path folder = corpora() / "exif-orientation";
    std::vector<Image> images;
    for (int orientation = 1; std::filesystem::exists(folder) && orientation <= 8; ++orientation) {
        images.push_back(
            imageFromBytes(readWhole(folder / ("Landscape_" + std::to_string(orientation) + ".jpg"))).value());
    }
    return images;
}

/// Of a space wider than sRGB.
inline Bytes profileOf(double gamma) {
    const cmsCIExyY white{0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* const curves[3] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsUInt32Number length = 0;
    EXPECT_TRUE(cmsSaveProfileToMem(profile, nullptr, &length));
    Bytes bytes(length);
    EXPECT_TRUE(cmsSaveProfileToMem(profile, bytes.data(), &length));
    cmsCloseProfile(profile);
    cmsFreeToneCurve(curve);
    return bytes;
}

inline Recording backgroundOf(const Image& picture, PixelSize canvas, const Rect& rect) {
    BitmapContext context({static_cast<double>(canvas.width), static_cast<double>(canvas.height)});
    context.drawImage(picture, rect);
    return context.recording();
}

inline Recording backgroundOf(const Image& picture, PixelSize canvas) {
    return backgroundOf(picture, canvas, makeRect(0, 0, canvas.width, canvas.height));
}

} // namespace quillomat::testing
