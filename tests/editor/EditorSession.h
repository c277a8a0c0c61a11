// An editor on a stack of screens over a fake platform, and what a person does with it.
#pragma once

#include "FakePlatform.h"
#include "editor/EditingViewController.h"
#include "platform/foundation/Conversions.h"
#include "platform/views/NavigationController.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace quillomat::testing {

inline constexpr Rgba red{255, 0, 0, 255};
inline constexpr Rgba green{0, 255, 0, 255};
inline constexpr Rgba blue{0, 0, 255, 255};
inline constexpr Rgba yellow{255, 255, 0, 255};
inline constexpr Rgba magenta{255, 0, 255, 255};
inline constexpr Rgba black{0, 0, 0, 255};
inline constexpr Rgba clear{0, 0, 0, 0};

inline Image pictureOf(int width, int height, const std::function<Rgba(int, int)>& pixel) {
    return imageFromBytes(tinyPng(width, height, pixel)).value();
}

inline Image pictureOf(int width, int height, Rgba colour) {
    return pictureOf(width, height, [colour](int, int) { return colour; });
}

/// One pixel, premultiplied; magenta-free tests see {1, 2, 3, 4} where there is none.
inline Rgba pixelOf(const Image& image, int x, int y) {
    const SharedBitmap bitmap = image.bitmap();
    if (!bitmap || x < 0 || y < 0 || x >= bitmap->width() || y >= bitmap->height()) {
        return {1, 2, 3, 4};
    }
    const std::uint8_t* p = bitmap->row(y) + static_cast<std::ptrdiff_t>(x) * 4;
    return {p[0], p[1], p[2], p[3]};
}

// Definitions -----------------------------------------------------------------------------------------------------

inline Quad quadOf(double x, double y, double width, double height) {
    return {{x, y}, {x + width, y}, {x, y + height}, {x + width, y + height}};
}

/// Stores corners the way definitions do: each the top-left of a marker whose centre is the corner.
inline Value withCorners(Value record, const std::string& finalCode, const std::string& side, const Quad& quad) {
    const auto add = [&](const std::string& name, double value) {
        record = record.withMember(finalCode + name + side, Value::integer(static_cast<std::int64_t>(value) - 10));
    };
    add("topLeftX", quad.topLeft.x), add("topLeftY", quad.topLeft.y);
    add("topRightX", quad.topRight.x), add("topRightY", quad.topRight.y);
    add("bottomLeftX", quad.bottomLeft.x), add("bottomLeftY", quad.bottomLeft.y);
    add("bottomRightX", quad.bottomRight.x), add("bottomRightY", quad.bottomRight.y);
    return record;
}

inline Value withSize(Value record, const std::string& prefix, int width, int height) {
    return record.withMember(prefix + "Width", Value::integer(width))
        .withMember(prefix + "Height", Value::integer(height));
}

/// A 60 x 80 canvas and frame with one screen at (10, 20, 40, 40) and square-cut corners of radius 0.
inline Value plainMockup() {
    Value record = withSize(withSize(Value::object({}), "finalFrame", 60, 80), "frame", 60, 80);
    record = withCorners(std::move(record), "F", "", quadOf(10, 20, 40, 40));
    record = withCorners(std::move(record), "", "", quadOf(75, 75, 150, 150));
    return record.withMember("cornerRadius", Value::integer(0));
}

/// The same with a second screen at (40, 50, 20, 20).
inline Value doubleMockup() {
    Value record = withCorners(plainMockup(), "F", "2", quadOf(40, 50, 20, 20));
    record = withCorners(std::move(record), "", "2", quadOf(200, 200, 50, 50));
    return record.withMember("doubleImage", Value::boolean(true));
}

inline Value withGlare(Value record, const std::string& name, const Rect& rect) {
    return record.withMember("overlay", Value::string(name))
        .withMember("glareX", Value::integer(static_cast<std::int64_t>(rect.origin.x)))
        .withMember("glareY", Value::integer(static_cast<std::int64_t>(rect.origin.y)))
        .withMember("glareWidth", Value::integer(static_cast<std::int64_t>(rect.size.width)))
        .withMember("glareHeight", Value::integer(static_cast<std::int64_t>(rect.size.height)));
}

/// A 200 x 200 canvas whose screen at (20, 20, 160, 160) is large enough for a radius of 30.
inline Value roomyMockup() {
    Value record = withSize(withSize(Value::object({}), "finalFrame", 200, 200), "frame", 60, 80);
    record = withCorners(std::move(record), "F", "2", quadOf(20, 20, 160, 160));
    return withCorners(std::move(record), "F", "", quadOf(20, 20, 160, 160));
}

inline std::string catalogueOf(Value::Object definitions) {
    return writeJson(
        Value::object({{"version", Value::string("1")}, {"editInfo", Value::object(std::move(definitions))}}));
}

// The session -----------------------------------------------------------------------------------------------------

class NoScreens final : public Storyboard {
public:
    [[nodiscard]] std::shared_ptr<ViewController> instantiate(const std::string&) override { return nullptr; }
};

class EditorSession {
public:
    FakePlatform world;
    EditorState state;
    NoScreens storyboard;
    std::shared_ptr<ViewController> list = std::make_shared<ViewController>(world.platform, storyboard);
    NavigationController navigation{list};

    explicit EditorSession(bool designMode = false) { state.designMode = designMode; }

    /// The same world with another photo library.
    [[nodiscard]] Platform platformWith(PhotoLibrary& photos) {
        return {.files = world.files,
                .bundle = world.bundle,
                .web = world.web,
                .photos = photos,
                .documents = world.documents,
                .urls = world.urls,
                .mainQueue = world.queue,
                .log = world.log,
                .screen = {},
                .server = {},
                .documentsDirectory = world.documentsDirectory(),
                .imageLimits = {}};
    }

    void catalogue(Value::Object definitions) { world.putResource("main.json", catalogueOf(std::move(definitions))); }
    /// A catalogue of one mockup, "frame.png", with its 60 x 80 frame: green, with a hole of `hole` where it is clear.
    void mockup(const Value& record) {
        catalogue({{"frame.png", record}});
        frame("frame.png");
    }
    void frame(const std::string& name) {
        world.putResourceImage(name, tinyPng(60, 80, [](int x, int y) {
                                   return x < 4 || y < 4 ? green : clear; // an L along the left and top edges
                               }));
    }
    std::shared_ptr<EditingViewController> open(const std::string& name = "frame.png") {
        auto editor = std::make_shared<EditingViewController>(world.platform, storyboard, state);
        editor->setImageInfo(name);
        navigation.push(editor);
        return editor;
    }

    // What stands in front of the top screen and is not leaving.
    template <typename T> [[nodiscard]] std::shared_ptr<T> inFront() const {
        const auto& top = *navigation.top();
        return top.isDismissing() ? nullptr : std::dynamic_pointer_cast<T>(top.presented());
    }
    [[nodiscard]] std::shared_ptr<AlertController> alert() const { return inFront<AlertController>(); }
    [[nodiscard]] std::shared_ptr<ImagePickerController> picker() const { return inFront<ImagePickerController>(); }
    [[nodiscard]] std::string message() const { return alert() ? alert()->message() : "no alert"; }

    /// Presses an action of the alert in front and lets it go.
    void press(const std::string& action, const std::string& text = {}) {
        const auto front = alert();
        ASSERT_TRUE(front) << "nothing to answer with " << action;
        for (std::size_t i = 0; i < front->actions().size(); ++i) {
            if (front->actions()[i].title == action) {
                navigation.top()->answerAlert(front->id(), i, text);
                settle();
                return;
            }
        }
        FAIL() << "no action " << action;
    }
    void pick(const PickedMedia& media) {
        const auto front = picker();
        ASSERT_TRUE(front) << "no picker stands";
        navigation.top()->answerImagePicker(front->id(), media);
        settle();
    }
    void cancelPick() {
        const auto front = picker();
        ASSERT_TRUE(front) << "no picker stands";
        navigation.top()->cancelPicker(front->id());
        settle();
    }
    void settle() {
        while (navigation.top()->isDismissing()) {
            navigation.top()->dismissalEnded(navigation.top()->presented()->id());
        }
    }
    void wait(std::chrono::milliseconds time) { world.queue.advance(time); }

    void pickLeft(EditingViewController& editor, const Image& shot) {
        editor.addLeftButton()->press();
        pick({shot, {}});
    }
    void pickRight(EditingViewController& editor, const Image& shot) {
        editor.addRightButton()->press();
        pick({shot, {}});
    }
    void pickBackground(EditingViewController& editor, const Image& picture, const std::string& blur = "No") {
        editor.addBGButton()->press();
        pick({picture, picture});
        wait(std::chrono::milliseconds(100));
        press(blur);
    }
    [[nodiscard]] Image saved() const { return world.photos.written.empty() ? Image() : world.photos.written.back(); }
    [[nodiscard]] bool isAtTheList() const { return navigation.stack().size() == 1; }
    [[nodiscard]] std::size_t linesStartingWith(std::string_view start) const {
        std::size_t count = 0;
        for (const std::string& line : world.log.lines()) {
            count += line.starts_with(start) ? 1U : 0U;
        }
        return count;
    }
};

} // namespace quillomat::testing
