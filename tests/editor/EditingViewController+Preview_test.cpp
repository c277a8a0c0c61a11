// The preview and the saved picture beside each other: what is seen is what is saved.
#include "EditorSession.h"
#include "PictureComparison.h"

#include "platform/views/Drawing.h"

#include <algorithm>
#include <cmath>
#include <vector>

using namespace quillomat;
using namespace quillomat::testing;

namespace {

// The preview's corners are whole points and its radius is another one: pixels this near to a screen's edge are left
// out.
constexpr double inset = 6;
// Half a point's shift of the test screenshots' gradients, and the rounding of one more resampling.
constexpr int usualDifference = 4;
// A camera's dot and the body of a phone in front have hard edges, which a filter sharpens once on one road and twice
// on the other.
constexpr int largestDifference = 24;
constexpr std::size_t channelsAtHardEdges = 200;

Image gradient(int width, int height, std::uint8_t third) {
    return pictureOf(width, height, [=](int x, int y) {
        return Rgba{static_cast<std::uint8_t>(x * 255 / width), static_cast<std::uint8_t>(y * 255 / height), third,
                    255};
    });
}

std::vector<Point> outlineOf(const std::shared_ptr<View>& topLeft, const std::shared_ptr<View>& topRight,
                             const std::shared_ptr<View>& bottomRight, const std::shared_ptr<View>& bottomLeft) {
    std::vector<Point> outline;
    for (const auto& marker : {topLeft, topRight, bottomRight, bottomLeft})
        outline.push_back(*convertToRoot(*marker, {10, 10}));
    return outline;
}

double distanceToSegment(Point p, Point a, Point b) {
    const Point along = b - a;
    const double length = along.x * along.x + along.y * along.y;
    const double t = length > 0 ? std::clamp(((p.x - a.x) * along.x + (p.y - a.y) * along.y) / length, 0.0, 1.0) : 0;
    return std::hypot(p.x - a.x - t * along.x, p.y - a.y - t * along.y);
}

bool isNear(const std::vector<Point>& outline, Point p) {
    for (std::size_t i = 0; i < outline.size(); ++i) {
        if (distanceToSegment(p, outline[i], outline[(i + 1) % outline.size()]) < inset)
            return true;
    }
    return false;
}

bool isInside(const std::vector<Point>& outline, Point p) {
    bool inside = false;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const Point a = outline[i];
        const Point b = outline[(i + 1) % outline.size()];
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) * (b.x - a.x) / (b.y - a.y))
            inside = !inside;
    }
    return inside;
}

/// The pixels well inside a screen, black everywhere else.
Bitmap screensOf(const Bitmap& picture, const std::vector<std::vector<Point>>& screens) {
    Bitmap kept(picture.size());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const Point p{x + 0.5, y + 0.5};
            const auto near = [&](const auto& outline) { return isNear(outline, p); };
            const auto inside = [&](const auto& outline) { return isInside(outline, p); };
            const auto at = static_cast<std::ptrdiff_t>(x) * 4;
            if (std::none_of(screens.begin(), screens.end(), near) &&
                std::any_of(screens.begin(), screens.end(), inside))
                std::copy_n(picture.row(y) + at, 4, kept.row(y) + at);
        }
    }
    return kept;
}

void expectSameScreens(const std::string& name, const Image& seen, const Image& saved,
                       const std::vector<std::vector<Point>>& screens) {
    const Bitmap expected = screensOf(*saved.bitmap(), screens);
    const Bitmap actual = screensOf(*seen.bitmap(), screens);
    EXPECT_GT(differenceBetween(expected, Bitmap(expected.size())).noticeable, 1000U) << "nothing to compare";
    const PictureDifference found = differenceBetween(expected, actual, usualDifference);
    if (found.largest <= largestDifference && found.noticeable <= channelsAtHardEdges)
        return;
    leaveBehind(name + "-saved", expected);
    leaveBehind(name + "-seen", actual);
    leaveBehind(name + "-difference", pictureOfDifference(expected, actual));
    ADD_FAILURE() << "largest difference " << found.largest << ", " << found.noticeable
                  << " channels differ noticeably; pictures left as " << name << "-*.png";
}

/// Every mockup of a catalogue whose frame is its canvas; "-large" ones take their preview's first screen from another
/// entry, on purpose, and are left out.
void comparePreviews(const std::string& resources) {
    EditorSession session;
    DirectoryBundle bundle(resources);
    Platform platform{session.world.files,
                      bundle,
                      session.world.web,
                      session.world.photos,
                      session.world.documents,
                      session.world.urls,
                      session.world.queue,
                      session.world.log,
                      {},
                      {},
                      session.world.documentsDirectory(),
                      {}};
    const Value definitions = CatalogueDocument(platform).JSONFromFile()["editInfo"];
    ASSERT_GT(definitions.count(), 0U) << resources;
    for (const auto& [name, record] : definitions.members()) {
        const MockupDefinition definition(record);
        if (name.find("-large") != std::string::npos || definition.frameRect().size != definition.canvasSize())
            continue;
        SCOPED_TRACE(name);
        const auto editor = std::make_shared<EditingViewController>(platform, session.storyboard, session.state);
        editor->setImageInfo(name);
        editor->view();
        editor->inside1()->setImage(gradient(200, 400, 40));
        editor->inside2()->setImage(gradient(200, 400, 220));
        editor->background()->setImage(pictureOf(4, 4, blue));

        std::vector<std::vector<Point>> screens{outlineOf(editor->topLeftControl(), editor->topRightControl(),
                                                          editor->bottomRightControl(), editor->bottomLeftControl())};
        if (definition.hasSecondScreen())
            screens.push_back(outlineOf(editor->topLeftControl2(), editor->topRightControl2(),
                                        editor->bottomRightControl2(), editor->bottomLeftControl2()));
        const Rect canvas = editor->background()->frame();
        const Rect root = editor->view()->bounds();
        BitmapContext preview(root.size, 1);
        ASSERT_TRUE(drawViewHierarchy(*editor->view(), root, preview));

        editor->generateImage();
        EXPECT_EQ(editor->compositionProblem(), "");
        BitmapContext saved(root.size, 1);
        saved.drawImage(session.state.pendingImage, canvas);
        expectSameScreens(name, preview.makeImage(), saved.makeImage(), screens);
    }
}

TEST(EditorPreviewDrawing, everyFixtureMockupLooksTheSameInPreviewAndPicture) {
    comparePreviews(QUILLOMAT_SOURCE_DIR "/tests/fixtures/catalogue");
}

TEST(EditorPreviewDrawing, everyStarterMockupLooksTheSameInPreviewAndPicture) {
    comparePreviews(QUILLOMAT_SOURCE_DIR "/resources");
}

TEST(EditorPreviewDrawing, anEditorCanBeDrawnAtAnySize) {
    EditorSession session;
    session.mockup(plainMockup());
    const auto editor = session.open();
    editor->background()->setImage(pictureOf(4, 4, blue));
    editor->inside1()->setImage(pictureOf(4, 4, red));
    const Rect root = editor->view()->bounds();
    const Point middle = editor->background()->center();
    for (const double zoom : {0.5, 1.0, 2.5}) {
        const Rect rect = makeRect(0, 0, root.size.width * zoom, root.size.height * zoom);
        BitmapContext context(rect.size, 1);
        ASSERT_TRUE(drawViewHierarchy(*editor->view(), rect, context));
        const Image drawn = context.makeImage();
        EXPECT_EQ(pixelOf(drawn, static_cast<int>(middle.x * zoom), static_cast<int>(middle.y * zoom)), red) << zoom;
        EXPECT_EQ(pixelOf(drawn, static_cast<int>((middle.x - 90) * zoom), static_cast<int>((middle.y + 120) * zoom)),
                  blue)
            << zoom;
    }
}

TEST(EditorPreviewDrawing, designAidsAreDrawnInDesignModeOnly) {
    for (const bool designMode : {false, true}) {
        EditorSession session(designMode);
        session.mockup(plainMockup());
        const auto editor = session.open();
        const Rect root = editor->view()->bounds();
        BitmapContext context(root.size, 1);
        ASSERT_TRUE(drawViewHierarchy(*editor->view(), root, context));
        const Image drawn = context.makeImage();
        EXPECT_EQ(pixelOf(drawn, 27, 500), designMode ? black : clear) << "the panel";
        const Point corner = *convertToRoot(*editor->topLeftControl(), {3, 3});
        const Rgba marker = pixelOf(drawn, static_cast<int>(corner.x), static_cast<int>(corner.y));
        EXPECT_EQ(marker[0] > 100, designMode) << "a marker outside the screen";
    }
}

} // namespace
