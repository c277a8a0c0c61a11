// Compares pictures within a named tolerance; a failure leaves expected, actual and difference PNGs in the build
// folder.
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/PngWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace quillomat {

/// How far two pictures may differ: the largest difference of any channel, and how many channels may differ by more
/// than `noticeable`.
struct PictureTolerance {
    int largest = 0;
    int noticeable = 0;
    double share = 0; // of all channels, that may differ by more than `noticeable`
    double leastPsnr = 0;
};

struct PictureDifference {
    int largest = 0;
    int largestAlpha = 0;
    std::size_t noticeable = 0;
    std::size_t channels = 0;
    double psnr = 0;
};

inline PictureDifference differenceBetween(const Bitmap& expected, const Bitmap& actual, int noticeable = 0) {
    PictureDifference result;
    result.channels = expected.bytes().size();
    double squares = 0;
    for (std::size_t i = 0; i < expected.bytes().size() && i < actual.bytes().size(); ++i) {
        const int difference = std::abs(expected.bytes()[i] - actual.bytes()[i]);
        result.largest = std::max(result.largest, difference);
        result.largestAlpha = i % 4 == 3 ? std::max(result.largestAlpha, difference) : result.largestAlpha;
        result.noticeable += difference > noticeable ? 1U : 0U;
        squares += difference * difference;
    }
    const double mean = squares / static_cast<double>(std::max<std::size_t>(result.channels, 1));
    result.psnr = mean > 0 ? 10 * std::log10(255.0 * 255.0 / mean) : 999;
    return result;
}

/// Differences, 16 times as strong, on black.
inline Bitmap pictureOfDifference(const Bitmap& expected, const Bitmap& actual) {
    Bitmap picture(expected.size());
    for (std::size_t i = 0; i < picture.bytes().size(); ++i) {
        const int difference = std::abs(expected.bytes()[i] - actual.bytes()[i]);
        picture.bytes()[i] = i % 4 == 3 ? 255 : static_cast<std::uint8_t>(std::min(255, difference * 16));
    }
    return picture;
}

inline void leaveBehind(const std::string& name, const Bitmap& bitmap) {
    const auto folder = std::filesystem::path(QUILLOMAT_BINARY_DIR) / "failed-pictures";
    std::filesystem::create_directories(folder);
    if (const auto png = encodePng(bitmap)) {
        std::ofstream file(folder / (name + ".png"), std::ios::binary);
        for (const std::byte byte : *png) {
            file.put(static_cast<char>(byte));
        }
    }
}

inline std::string currentTestName() {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(info->test_suite_name()) + "." + info->name();
    std::replace(name.begin(), name.end(), '/', '-');
    return name;
}

inline ::testing::AssertionResult picturesAgree(const Bitmap& expected, const Bitmap& actual,
                                                const PictureTolerance& tolerance) {
    if (expected.size() != actual.size()) {
        return ::testing::AssertionFailure() << "sizes differ: " << expected.width() << " x " << expected.height()
                                             << " and " << actual.width() << " x " << actual.height();
    }
    const PictureDifference found = differenceBetween(expected, actual, tolerance.noticeable);
    const double share =
        static_cast<double>(found.noticeable) / static_cast<double>(std::max<std::size_t>(found.channels, 1));
    if (found.largest <= tolerance.largest && share <= tolerance.share && found.psnr >= tolerance.leastPsnr) {
        return ::testing::AssertionSuccess();
    }
    const std::string name = currentTestName();
    leaveBehind(name + "-expected", expected);
    leaveBehind(name + "-actual", actual);
    leaveBehind(name + "-difference", pictureOfDifference(expected, actual));
    return ::testing::AssertionFailure() << "largest difference " << found.largest << ", " << found.noticeable << " of "
                                         << found.channels << " channels differ by more than " << tolerance.noticeable
                                         << ", PSNR " << found.psnr << " dB; pictures left as " << name << "-*.png";
}

} // namespace quillomat
