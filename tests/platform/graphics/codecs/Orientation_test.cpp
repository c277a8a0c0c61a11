#include "TestPictures.h"
#include "platform/graphics/codecs/Orientation.h"

#include <cmath>
#include <map>

namespace quillomat::testing {
namespace {

using codecs::Orientation;

/// A picture whose pixels are the given letters.
Bitmap letters(const std::vector<std::string>& rows) {
    Bitmap bitmap(PixelSize{static_cast<int>(rows[0].size()), static_cast<int>(rows.size())});
    for (int y = 0; y < bitmap.height(); ++y) {
        for (int x = 0; x < bitmap.width(); ++x) {
            const char letter = rows[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)];
            std::fill_n(bitmap.row(y) + static_cast<std::size_t>(x) * 4, 4, static_cast<std::uint8_t>(letter));
        }
    }
    return bitmap;
}

TEST(Orientation, eachOfTheEightTurnsWhatIsStoredUpright) {
    // What a camera stores of the upright picture ABC / DEF, after the figure in the Exif standard.
    const std::map<int, std::vector<std::string>> stored{
        {1, {"ABC", "DEF"}},     {2, {"CBA", "FED"}},     {3, {"FED", "CBA"}},     {4, {"DEF", "ABC"}},
        {5, {"AD", "BE", "CF"}}, {6, {"CF", "BE", "AD"}}, {7, {"FC", "EB", "DA"}}, {8, {"DA", "EB", "FC"}}};
    for (const auto& [number, rows] : stored) {
        EXPECT_EQ(codecs::turnUpright(letters(rows), static_cast<Orientation>(number)), letters({"ABC", "DEF"}))
            << number;
    }
}

TEST(Orientation, largePicturesAreTurnedWholeAcrossBlocks) {
    Bitmap stored(PixelSize{101, 67});
    for (int y = 0; y < 67; ++y) {
        for (int x = 0; x < 101; ++x) {
            stored.row(y)[x * 4] = static_cast<std::uint8_t>(x);
            stored.row(y)[x * 4 + 1] = static_cast<std::uint8_t>(y);
        }
    }
    const Bitmap upright = codecs::turnUpright(stored, Orientation::turnedLeft);
    ASSERT_EQ(upright.size(), (PixelSize{67, 101}));
    for (int y = 0; y < 101; ++y) {
        for (int x = 0; x < 67; ++x) {
            ASSERT_EQ(upright.row(y)[x * 4], y);
            ASSERT_EQ(upright.row(y)[x * 4 + 1], 66 - x);
        }
    }
}

TEST(Orientation, exifIsReadWithAndWithoutItsHeaderInBothByteOrders) {
    const std::string big{"MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x08\0\0\0\0\0\0", 26};
    const std::string little{"II\x2a\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x08\0\0\0\0\0\0\0", 26};
    for (const std::string& block : {big, little}) {
        const std::string headed = std::string("Exif\0\0", 6) + block;
        EXPECT_EQ(codecs::orientationFromExif(std::as_bytes(std::span(block))), Orientation::turnedRight);
        EXPECT_EQ(codecs::orientationFromExif(std::as_bytes(std::span(headed))), Orientation::turnedRight);
    }
}

TEST(Orientation, brokenExifIsUpright) {
    std::string block{"MM\0\x2a\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x08\0\0\0\0\0\0", 26};
    for (std::size_t length = 0; length < 20; ++length) {
        EXPECT_EQ(codecs::orientationFromExif(std::as_bytes(std::span(block).first(length))), Orientation::upright);
    }
    block[19] = 9; // no such orientation
    EXPECT_EQ(codecs::orientationFromExif(std::as_bytes(std::span(block))), Orientation::upright);
}

/// Peak signal-to-noise ratio in decibels.
double likeness(const Bitmap& a, const Bitmap& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.bytes().size(); ++i) {
        const double difference = double{a.bytes()[i] * 1.0} - double{b.bytes()[i] * 1.0};
        sum += difference * difference;
    }
    return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.bytes().size()) / std::max(sum, 1e-9));
}

TEST(OrientationCorpus, allValuesGiveTheSameUprightPicture) {
    const std::filesystem::path folder = corpora() / "exif-orientation";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "the orientation corpus is not here: " << folder;
    }
    for (const std::string kind : {"Landscape", "Portrait"}) {
        const Result<Bitmap> upright = decodeImage(readWhole(folder / (kind + "_1.jpg")));
        ASSERT_TRUE(upright) << upright.reason();
        for (int value = 0; value <= 8; ++value) {
            const Bytes bytes = readWhole(folder / (kind + "_" + std::to_string(value) + ".jpg"));
            const Result<Bitmap> decoded = decodeImage(bytes);
            ASSERT_TRUE(decoded) << kind << value << decoded.reason();
            ASSERT_EQ(decoded->size(), upright->size()) << kind << value;
            EXPECT_EQ(readImageHeader(bytes)->size, upright->size()) << kind << value;
            // The files were compressed anew after turning; a wrong turn scores about 10.
            EXPECT_GT(likeness(*decoded, *upright), 25) << kind << value;
        }
    }
}

TEST(OrientationCorpus, reducedDecodingIsUprightToo) {
    const std::filesystem::path folder = corpora() / "exif-orientation";
    if (!std::filesystem::exists(folder)) {
        GTEST_SKIP() << "the orientation corpus is not here: " << folder;
    }
    const Result<Bitmap> reduced = decodeImageReduced(readWhole(folder / "Landscape_6.jpg"), {300, 100});
    ASSERT_TRUE(reduced) << reduced.reason();
    EXPECT_EQ(reduced->size(), (PixelSize{450, 300}));
}

} // namespace
} // namespace quillomat::testing
