#include "platform/graphics/DrawnPictures.h"

#include "codecs/TestPictures.h"
#include "platform/graphics/Cropping.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/Rasterizer.h"

#include <cmath>

namespace quillomat::testing {
namespace {

Image picture(const Bytes& document) {
    Result<Image> image = imageFromBytes(document);
    EXPECT_TRUE(image) << image.reason();
    return image ? std::move(image).value() : Image();
}

Bytes photograph() {
    return readWhole(std::filesystem::path(QUILLOMAT_SOURCE_DIR) / "resources/samples/background.jpg");
}

LayerDraw drawOver(const Image& image, const Rect& rect) {
    LayerDraw draw;
    draw.shape.rect = rect;
    draw.picture = image;
    draw.pictureRect = rect;
    return draw;
}

PixelSize decodedSize(const LayerDraw& draw) {
    Recording recording(PixelSize{100, 100});
    recording.add(draw);
    return withDecodedPictures(recording).draws()[0].picture.bitmap()->size();
}

TEST(DrawnPictures, photographDrawnSmallIsDecodedAtTwiceWhatIsDrawn) {
    const Image image = picture(photograph());
    const PixelSize whole = image.pixelSize();
    const PixelSize decoded = decodedSize(drawOver(image, {{0, 0}, {whole.width / 16.0, whole.height / 16.0}}));
    EXPECT_EQ(decoded.width, (whole.width + 7) / 8);
    EXPECT_EQ(decoded.height, (whole.height + 7) / 8);
}

TEST(DrawnPictures, photographDrawnLargeIsDecodedWhole) {
    const Image image = picture(photograph());
    const PixelSize whole = image.pixelSize();
    EXPECT_EQ(decodedSize(drawOver(image, {{0, 0}, {whole.width * 0.6, whole.height * 0.1}})), whole);
}

TEST(DrawnPictures, scaleOfTheMapCounts) {
    const Image image = picture(photograph());
    const PixelSize whole = image.pixelSize();
    LayerDraw draw = drawOver(image, {{0, 0}, {whole.width * 1.0, whole.height * 1.0}});
    draw.map = Homography::fromAffine({0, 1 / 16.0, -1 / 16.0, 0, 50, 50}); // a quarter turn
    EXPECT_EQ(decodedSize(draw).width, (whole.width + 7) / 8);
}

TEST(DrawnPictures, pictureInPerspectiveIsDecodedWhole) {
    const Image image = picture(photograph());
    LayerDraw draw = drawOver(image, {{0, 0}, {20, 20}});
    draw.map.m[2] = 0.001;
    EXPECT_EQ(decodedSize(draw), image.pixelSize());
}

TEST(DrawnPictures, largestOfSeveralDrawsDecides) {
    const Image image = picture(photograph());
    const PixelSize whole = image.pixelSize();
    Recording recording(PixelSize{100, 100});
    recording.add(drawOver(image, {{0, 0}, {whole.width / 16.0, whole.height / 16.0}}));
    recording.add(drawOver(image, {{0, 0}, {whole.width / 4.0, whole.height / 4.0}}));
    const Recording decoded = withDecodedPictures(recording);
    EXPECT_EQ(decoded.draws()[0].picture.bitmap(), decoded.draws()[1].picture.bitmap());
    EXPECT_EQ(decoded.draws()[0].picture.bitmap()->width(), (whole.width + 1) / 2);
}

TEST(DrawnPictures, cutPhotographIsReducedToo) {
    const Image image = picture(photograph());
    const int side = image.pixelSize().height;
    const Image cut = croppedImage(image, centredCrop(image.pixelSize(), {1, 1}));
    ASSERT_EQ(cut.pixelSize(), (PixelSize{side, side}));
    EXPECT_EQ(decodedSize(drawOver(cut, {{0, 0}, {side / 4.0, side / 4.0}})), (PixelSize{side / 2, side / 2}));
}

Image overlayPicture() {
    Bitmap bitmap({90, 70});
    std::fill_n(bitmap.row(30), 200, std::uint8_t{100});
    return picture(encodePng(bitmap).value());
}

std::shared_ptr<const SparsePicture> runsOf(const Recording& recording, std::size_t draw = 0) {
    return withDecodedPictures(recording).draws()[draw].picture.source()->sparsePixels();
}

TEST(DrawnPictures, overlaysThatLieOnThePixelsAreDecodedInRuns) {
    const Image image = overlayPicture();
    Recording recording(PixelSize{100, 100});
    recording.add(drawOver(image, {{-5, 7}, {90, 70}}));
    const auto sparse = runsOf(recording);
    ASSERT_TRUE(sparse);
    EXPECT_EQ(bitmapOf(*sparse), *image.bitmap());
    EXPECT_EQ(withDecodedPictures(recording).draws()[0].picture.bitmap(), nullptr);
    EXPECT_EQ(withDecodedPictures(recording).draws()[0].picture.pixelSize(), image.pixelSize());
}

TEST(DrawnPictures, aPictureThatIsAlsoDrawnScaledIsABitmapForAll) {
    const Image image = overlayPicture();
    Recording recording(PixelSize{100, 100});
    recording.add(drawOver(image, {{0, 0}, {90, 70}}));
    recording.add(drawOver(image, {{0, 0}, {91, 70}}));
    EXPECT_EQ(runsOf(recording, 0), nullptr);
    EXPECT_NE(withDecodedPictures(recording).draws()[0].picture.bitmap(), nullptr);
}

TEST(DrawnPictures, whatIsThereOrKnownToBeOpaqueIsNotDecodedInRuns) {
    const Image image = overlayPicture();
    Recording recording(PixelSize{100, 100});
    recording.add(drawOver(image, {{0, 0}, {90, 70}}));
    const SharedBitmap held = image.bitmap();
    EXPECT_EQ(runsOf(recording), nullptr);
    EXPECT_EQ(withDecodedPictures(recording).draws()[0].picture.bitmap(), held);

    Bitmap white({10, 10});
    std::fill(white.bytes().begin(), white.bytes().end(), std::uint8_t{255});
    Recording opaque(PixelSize{100, 100});
    opaque.add(drawOver(picture(encodePng(white).value()), {{0, 0}, {10, 10}}));
    EXPECT_EQ(runsOf(opaque), nullptr);
}

TEST(DrawnPictures, aDamagedOverlaySaysWhy) {
    Bytes document = encodePng(Bitmap({90, 70})).value();
    document.resize(document.size() - 20);
    Recording recording(PixelSize{100, 100});
    const Image image = picture(document);
    recording.add(drawOver(image, {{0, 0}, {90, 70}}));
    EXPECT_EQ(runsOf(recording), nullptr);
    EXPECT_EQ(image.source()->failure(), "truncated PNG");
}

/// Has no pixels, and notes when it is asked for some.
class NotingSource final : public ImageSource {
public:
    NotingSource(PixelSize size, std::string name, bool mayBeInPlanes, std::vector<std::string>& asked)
        : size_(size), name_(std::move(name)), mayBeInPlanes_(mayBeInPlanes), asked_(asked) {}

    [[nodiscard]] PixelSize pixelSize() const override { return size_; }
    [[nodiscard]] bool isKnownOpaque() const override { return false; }
    [[nodiscard]] SharedBitmap bitmap() const override {
        asked_.push_back(name_);
        return nullptr;
    }
    [[nodiscard]] bool mayBeInPlanes() const override { return mayBeInPlanes_; }
    [[nodiscard]] std::uint64_t encodedLength() const override { return 1; }

private:
    PixelSize size_;
    std::string name_;
    bool mayBeInPlanes_;
    std::vector<std::string>& asked_;
};

/// The order in which a background, a frame and a screenshot are decoded for a canvas of that side.
std::vector<std::string> decodingOrder(int side) {
    std::vector<std::string> asked;
    const auto source = [&](PixelSize size, const char* name, bool mayBeInPlanes) {
        return Image(std::make_shared<NotingSource>(size, name, mayBeInPlanes, asked));
    };
    const double length = side;
    const Rect canvas{{0, 0}, {length, length}};
    Recording recording(PixelSize{side, side});
    recording.add(drawOver(source({3000, 3000}, "background", true), canvas));
    LayerDraw screen = drawOver(source({1290, 2796}, "screenshot", false), {{0, 0}, {100, 200}});
    screen.map.m[2] = 0.001;
    recording.add(screen);
    recording.add(drawOver(source({side, side}, "frame", false), canvas));
    (void)withStreamedPictures(recording, 1);
    return asked;
}

TEST(DrawnPictures, whatKeepsThreadsLongestBeforeDrawingIsDecodedFirst) {
    using Names = std::vector<std::string>;
    EXPECT_EQ(decodingOrder(1080), (Names{"background", "screenshot", "frame"})) << "most of it has room to be kept";
    EXPECT_EQ(decodingOrder(2000), (Names{"frame", "screenshot", "background"})) << "little has";
    EXPECT_EQ(decodingOrder(3000), (Names{"frame", "screenshot", "background"})) << "nor does it where it is copied";
}

TEST(DrawnPictures, wholePictureIsStillThereAfterAReduction) {
    const Image image = picture(photograph());
    const SharedBitmap reduced = image.source()->bitmapOfAtLeast({10, 10});
    ASSERT_TRUE(reduced);
    EXPECT_LT(reduced->width(), image.pixelSize().width);
    EXPECT_EQ(image.source()->bitmapOfAtLeast({5, 5}), reduced) << "decoded once";
    EXPECT_EQ(image.bitmap()->size(), image.pixelSize());
    EXPECT_EQ(image.source()->bitmapOfAtLeast({5, 5}), image.bitmap());
}

TEST(DrawnPictures, reductionLeavesNoTraceInTheResult) {
    const PixelSize whole = picture(photograph()).pixelSize();
    const PixelSize canvas{whole.width / 5, whole.height / 5};
    const auto drawn = [&](const Image& image) {
        Recording recording(canvas);
        recording.add(drawOver(image, {{0, 0}, {canvas.width * 1.0, canvas.height * 1.0}}));
        return rasterize(recording);
    };
    const Bitmap fromReduced = drawn(picture(photograph()));
    const Bitmap fromWhole = drawn(Image::fromBitmap(*decodeImage(photograph())));
    double squares = 0;
    for (std::size_t i = 0; i < fromWhole.bytes().size(); ++i) {
        const double difference = 1.0 * fromWhole.bytes()[i] - fromReduced.bytes()[i];
        squares += difference * difference;
    }
    const double psnr = 10 * std::log10(255 * 255 * static_cast<double>(fromWhole.bytes().size()) / squares);
    EXPECT_GT(psnr, 46);
}

TEST(DrawnPictures, pictureThatCannotBeDecodedIsNotDrawnAndSaysWhy) {
    Bytes broken = photograph();
    broken.resize(broken.size() / 2);
    const Image image = picture(broken);
    Recording recording(PixelSize{10, 10});
    recording.add(drawOver(image, {{0, 0}, {10, 10}}));
    const Bitmap drawn = rasterize(recording);
    EXPECT_EQ(pixelAt(drawn, 5, 5), (Rgba{0, 0, 0, 0}));
    EXPECT_EQ(image.source()->failure(), "truncated JPEG");
}

} // namespace
} // namespace quillomat::testing
