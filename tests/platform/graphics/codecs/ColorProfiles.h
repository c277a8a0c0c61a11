// Colour profiles made for tests.
#pragma once

#include "TestPictures.h"

#include <gtest/gtest.h>
#include <lcms2.h>

namespace quillomat::testing {

/// The profile as a document; it is closed.
inline Bytes documentOf(cmsHPROFILE profile) {
    cmsUInt32Number length = 0;
    EXPECT_TRUE(cmsSaveProfileToMem(profile, nullptr, &length));
    Bytes bytes(length);
    EXPECT_TRUE(cmsSaveProfileToMem(profile, bytes.data(), &length));
    cmsCloseProfile(profile);
    return bytes;
}

/// Of a space wider than sRGB.
inline Bytes profileOf(double gamma) {
    const cmsCIExyY white{0.3127, 0.3290, 1};
    const cmsCIExyYTRIPLE primaries{{0.68, 0.32, 1}, {0.265, 0.69, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* const curves[3] = {curve, curve, curve};
    Bytes bytes = documentOf(cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(curve);
    return bytes;
}

} // namespace quillomat::testing
