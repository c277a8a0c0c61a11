// What one editor leaves to the next: the editor's process-wide values, owned by the application object.
#pragma once

#include "platform/graphics/Image.h"
#include "platform/views/Controls.h"
#include "platform/views/View.h"

#include <cstdint>
#include <memory>
#include <string>

namespace quillomat {

/// Whether this build carries the design aids (a build setting; the delivered application has none).
[[nodiscard]] bool isDesignBuild();

/// Outlives every editor and is never reset between them: a stale picking flag, a glare that is still on or a picture
/// that nobody saved meets the next editor as it stands. Tests and batch jobs start from one of their own.
struct EditorState {
    bool designMode = isDesignBuild();

    /// The 300 x 300 view with the screens and markers of the latest editor's preview.
    std::shared_ptr<View> previewContainer;
    /// The latest editor's mockup name without "-large": the frame picture's name, and the files a deletion removes.
    std::string frameImageName;

    // Set by a pick button, cleared only by the delivery to that button's own view; turning a picker away clears
    // nothing.
    bool pickingLeft = false;
    bool pickingRight = false;
    bool pickingBackground = false;

    // The newest edit panel's value buttons; older panels keep their last titles.
    std::shared_ptr<Button> cornerRadiusButton;
    std::shared_ptr<Button> topLeftXButton;
    std::shared_ptr<Button> topLeftYButton;
    std::shared_ptr<Button> topRightXButton;
    std::shared_ptr<Button> topRightYButton;
    std::shared_ptr<Button> bottomLeftXButton;
    std::shared_ptr<Button> bottomLeftYButton;
    std::shared_ptr<Button> bottomRightXButton;
    std::shared_ptr<Button> bottomRightYButton;
    /// The last corner radius entered. Written only: nothing reads it.
    std::int32_t lastCornerRadius = 0;

    /// A composed picture that waits for the next save, in whatever editor that happens; no picture when none waits.
    Image pendingImage;
    bool previewComposite = false;
    std::shared_ptr<ScrollView> designScrollView;

    bool glareOn = false;
};

} // namespace quillomat
