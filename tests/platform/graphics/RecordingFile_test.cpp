#include "DrawnPictures.h"
#include "platform/foundation/Value.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/RecordingFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace quillomat {
namespace {

Image encoded(const Bitmap& bitmap) {
    return *imageFromBytes(*encodePng(bitmap));
}

/// Everything that a draw can hold: pictures of each kind, one twice, and numbers that are none.
Recording sample() {
    const Image document = encoded(screenshotLike({90, 120}));
    BitmapContext inner(Size{40, 30});
    inner.drawImage(encoded(photographLike({20, 20})), makeRect(0, 0, 41, 30.5));
    BitmapContext context(Size{120, 100});
    context.drawImage(Image::fromBitmap(photographLike({64, 48})), makeRect(0, 0, 120, 100));
    context.drawImage(inner.makeImage(), makeRect(3, 4, 40, 30));
    LayerDraw layer = fittedLayer(document, {{20, 10}, {100, 14}, {26, 90}, {96, 84}}, 9.5);
    layer.fill = Color{0.1, 0.2, 0.3, 0.4};
    layer.borderWidth = 1.25;
    layer.borderColor = Color{1, 0, 0.5, 1};
    layer.opacity = 0.75;
    layer.clips.push_back({Homography{}, {makeRect(10, 10, 99.5, 70), 3}});
    context.drawLayer(layer);
    context.drawImage(croppedImage(document, {5, 6, 70, 80}), makeRect(60.5, 20.25, 33, 44));
    Recording recording = context.recording();
    LayerDraw lost = fittedLayer(document, {{1, 1}, {9, 1}, {1, 9}, {9, 9}});
    lost.map.m[0] = std::numeric_limits<double>::quiet_NaN();
    lost.map.m[6] = std::numeric_limits<double>::infinity();
    lost.map.m[7] = -std::numeric_limits<double>::infinity();
    recording.add(lost);
    return recording;
}

/// A file around a header, with documents behind it.
Bytes fileOf(const std::string& header, const Bytes& documents = {}, std::uint32_t version = 1) {
    Bytes file;
    for (const char c : std::string_view("QMRECORD")) {
        file.push_back(static_cast<std::byte>(c));
    }
    for (const std::uint32_t number : {version, static_cast<std::uint32_t>(header.size())}) {
        for (const int shift : {0, 8, 16, 24}) {
            file.push_back(static_cast<std::byte>(number >> shift));
        }
    }
    const auto text = std::as_bytes(std::span(header));
    file.insert(file.end(), text.begin(), text.end());
    file.insert(file.end(), documents.begin(), documents.end());
    return file;
}

std::string reasonOf(const Bytes& file, const ImageLimits& limits = {}) {
    const auto read = readRecordingFile(file, limits);
    return read ? "read" : read.reason();
}

const std::string identity = R"("map": [1, 0, 0, 0, 1, 0, 0, 0, 1])";

TEST(RecordingFile, whatIsReadIsDrawnToTheSameBit) {
    const Recording recording = sample();
    const Result<Bytes> file = writeRecordingFile(recording);
    ASSERT_TRUE(file) << file.reason();
    const Result<Recording> read = readRecordingFile(*file);
    ASSERT_TRUE(read) << read.reason();
    EXPECT_EQ(describeRecording(*read), describeRecording(recording));
    EXPECT_EQ(rasterize(*read), rasterize(recording));
    EXPECT_EQ(*encodePng(imageOfRecording(*read)), *encodePng(imageOfRecording(recording)));
}

TEST(RecordingFile, theSameRecordingGivesTheSameBytes) {
    const Bytes file = *writeRecordingFile(sample());
    EXPECT_EQ(*writeRecordingFile(sample()), file);
    EXPECT_EQ(*writeRecordingFile(*readRecordingFile(file)), file);
}

TEST(RecordingFile, everyMapComesBackExactly) {
    const Recording recording = sample();
    const Recording read = *readRecordingFile(*writeRecordingFile(recording));
    ASSERT_EQ(read.draws().size(), recording.draws().size());
    for (std::size_t i = 0; i < read.draws().size(); ++i) {
        EXPECT_EQ(std::memcmp(read.draws()[i].map.m.data(), recording.draws()[i].map.m.data(), 9 * sizeof(double)), 0)
            << i;
        EXPECT_EQ(read.draws()[i].shape, recording.draws()[i].shape);
        EXPECT_EQ(read.draws()[i].filter, recording.draws()[i].filter);
        EXPECT_EQ(read.draws()[i].opacity, recording.draws()[i].opacity);
    }
}

TEST(RecordingFile, aPictureDrawnTwiceIsStoredOnce) {
    const Image picture = encoded(photographLike({200, 200}));
    BitmapContext once(Size{100, 100});
    once.drawImage(picture, makeRect(0, 0, 50, 50));
    BitmapContext twice = once;
    twice.drawImage(picture, makeRect(50, 50, 50, 50));
    EXPECT_LT(writeRecordingFile(twice.recording())->size(), writeRecordingFile(once.recording())->size() + 400);
}

TEST(RecordingFile, whatIsNoRecordingIsRefusedInWords) {
    EXPECT_EQ(reasonOf({}), "empty file");
    EXPECT_EQ(reasonOf(*encodePng(photographLike({4, 4}))), "not a recording");
    EXPECT_EQ(reasonOf(fileOf("{}", {}, 2)), "a recording of version 2; this program reads version 1");
    EXPECT_NE(reasonOf(fileOf("{")).find("the header: "), std::string::npos);
    EXPECT_EQ(reasonOf(fileOf("{}")), "the list of pictures is missing or too long");
    EXPECT_EQ(reasonOf(fileOf(R"({"pictures": []})")), "a size or place in pixels is no whole number");
    EXPECT_EQ(reasonOf(fileOf(R"({"canvas": [0, 5], "pictures": [], "draws": []})")),
              "a canvas is empty or over the limit");
    EXPECT_EQ(reasonOf(fileOf(R"({"canvas": [5, 5], "pictures": []})")), "the list of draws is missing");
    EXPECT_EQ(reasonOf(fileOf(R"({"canvas": [5, 5], "pictures": [], "draws": [{}]})")), "a map is not 9 numbers");
}

TEST(RecordingFile, aFileCutShortAnywhereIsRefused) {
    const Bytes file = *writeRecordingFile(sample());
    for (std::size_t length = 0; length < file.size(); length += length < 64 ? 1 : 97) {
        EXPECT_FALSE(readRecordingFile(std::span(file).first(length))) << length;
    }
    Bytes longer = file;
    longer.push_back(std::byte{0});
    EXPECT_EQ(reasonOf(longer), "there is more behind the last picture");
}

TEST(RecordingFile, aPictureMayOnlyReferToThoseBeforeIt) {
    const std::string head = R"({"canvas": [5, 5], "draws": [], "pictures": [{"canvas": [5, 5], "draws": [{)" +
                             identity + R"(, "rect": [0, 0, 5, 5], "pictureRect": [0, 0, 5, 5], "picture": )";
    for (const char* number : {"0", "1", "-1", "99999999999", "0.5", "\"0\""}) {
        EXPECT_EQ(reasonOf(fileOf(head + number + "}]}]}")), "a picture is drawn that does not come before") << number;
    }
}

TEST(RecordingFile, aPictureLongerThanTheFileIsRefused) {
    for (const char* length : {"1", "-1", "9223372036854775807", "1e300", "null"}) {
        const std::string header =
            std::string(R"({"canvas": [5, 5], "draws": [], "pictures": [{"document": )") + length + "}]}";
        EXPECT_EQ(reasonOf(fileOf(header)), "a picture is longer than the file") << length;
    }
}

TEST(RecordingFile, aPartOutsideItsPictureIsRefused) {
    const Bytes png = *encodePng(photographLike({8, 8}));
    for (const char* part : {"[0, 0, 9, 8]", "[8, 0, 1, 1]", "[0, 0, 0, 0]", "[2147483647, 0, 2147483647, 1]"}) {
        const std::string header = R"({"canvas": [5, 5], "draws": [], "pictures": [{"document": )" +
                                   std::to_string(png.size()) + R"(}, {"whole": 0, "part": )" + part + "}]}";
        EXPECT_EQ(reasonOf(fileOf(header, png)), "a part does not lie inside its picture") << part;
    }
}

/// Recordings that each draw the one before twice.
std::string doubling(int levels, const std::string& canvas) {
    const std::string draw = "{" + identity + R"(, "rect": [0, 0, 5, 5], "pictureRect": [0, 0, 5, 5], "picture": )";
    std::string pictures = R"({"canvas": )" + canvas + R"(, "draws": []})";
    for (int i = 0; i < levels; ++i) {
        const std::string number = std::to_string(i) + "}";
        pictures += R"(, {"canvas": )" + canvas + R"(, "draws": [)" + draw + number + ", " + draw + number + "]}";
    }
    return R"({"canvas": [5, 5], "draws": [], "pictures": [)" + pictures + "]}";
}

TEST(RecordingFile, recordingsThatDoubleWithEveryLevelAreRefused) {
    EXPECT_EQ(reasonOf(fileOf(doubling(10, "[5, 5]"))), "read");
    EXPECT_EQ(reasonOf(fileOf(doubling(30, "[5, 5]"))), "more would be drawn than is allowed");
    EXPECT_EQ(reasonOf(fileOf(doubling(10, "[16000, 16000]"))), "more pixels would be needed than are allowed");
}

TEST(RecordingFile, theLimitsHoldForCanvasesAndPictures) {
    ImageLimits limits;
    limits.pixels = 1000;
    EXPECT_EQ(reasonOf(fileOf(R"({"canvas": [40, 40], "pictures": [], "draws": []})"), limits),
              "a canvas is empty or over the limit");
    const Bytes png = *encodePng(photographLike({40, 40}));
    const std::string header =
        R"({"canvas": [5, 5], "draws": [], "pictures": [{"document": )" + std::to_string(png.size()) + "}]}";
    EXPECT_NE(reasonOf(fileOf(header, png), limits).find("over the limit"), std::string::npos);
    EXPECT_EQ(reasonOf(fileOf(header, png)), "read");
}

} // namespace
} // namespace quillomat
