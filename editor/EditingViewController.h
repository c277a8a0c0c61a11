// The editor of one mockup: places screenshots in its screens, composes the full-resolution picture and saves it.
#pragma once

#include "catalogue/CatalogueDocument.h"
#include "catalogue/MockupEditing.h"
#include "editor/EditorState.h"
#include "editor/MockupDefinition.h"
#include "geometry/Quad.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/views/Controls.h"
#include "platform/views/GestureRecognizer.h"
#include "platform/views/Presentation.h"
#include "platform/views/ViewController.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quillomat {

struct Platform;

/// One source file per concern: EditingViewController+Layout, +Loading, +Placement, +Markers, +Options, +ImageSources,
/// +Blur, +EditPanel, +Composition, +Flattening, +Saving, +Glare. Everything runs on the interface's thread, except the
/// answer about the photo library, which only writes a log line. Silent towards the user where something is missing;
/// `compositionProblem` tells those who want to know.
class EditingViewController final : public ViewController, public MockupEditing, public ImagePickerDelegate {
public:
    EditingViewController(Platform& platform, Storyboard& storyboard, EditorState& state);

    // Properties ----------------------------------------------------------------------------------------------------
    /// The mockup's name, "-large" included; to be set before the view loads.
    [[nodiscard]] const std::string& imageInfo() const { return imageInfo_; }
    void setImageInfo(std::string imageInfo) override { imageInfo_ = std::move(imageInfo); }
    /// Mockup name to record: the catalogue's, with the user's imports added. Nothing before the view has loaded.
    [[nodiscard]] const Value& editInfo() const { return editInfo_; }
    /// The record under `imageInfo` as it stands.
    [[nodiscard]] MockupDefinition definition() const { return MockupDefinition(editInfo_[imageInfo_]); }
    [[nodiscard]] EditorState& state() const { return state_; }

    [[nodiscard]] const std::shared_ptr<ImageView>& phone() const { return phone_; }
    [[nodiscard]] const std::shared_ptr<ImageView>& overlay() const { return overlay_; }
    [[nodiscard]] const std::shared_ptr<ImageView>& inside1() const { return inside1_; }
    [[nodiscard]] const std::shared_ptr<ImageView>& inside2() const { return inside2_; }
    [[nodiscard]] const std::shared_ptr<ImageView>& background() const { return background_; }

    // The buttons `addLeft`, `addRight`, `addBG` and `addGlare` share their names with the actions below, so their
    // accessors carry their kind.
    [[nodiscard]] const std::shared_ptr<Button>& addLeftButton() const { return addLeftButton_; }
    [[nodiscard]] const std::shared_ptr<Button>& addRightButton() const { return addRightButton_; }
    [[nodiscard]] const std::shared_ptr<Button>& addBGButton() const { return addBGButton_; }
    [[nodiscard]] const std::shared_ptr<Button>& addGlareButton() const { return addGlareButton_; }
    [[nodiscard]] const std::shared_ptr<Button>& saveButton() const { return saveButton_; }

    /// The views fitted to screen 1 and screen 2; after a composition `contentView` is screen 1's flat picture.
    [[nodiscard]] const std::shared_ptr<View>& contentView() const { return contentView_; }
    void setContentView(std::shared_ptr<View> view) { contentView_ = std::move(view); }
    [[nodiscard]] const std::shared_ptr<View>& contentView2() const { return contentView2_; }
    void setContentView2(std::shared_ptr<View> view) { contentView2_ = std::move(view); }

    [[nodiscard]] const std::shared_ptr<View>& topLeftControl() const { return markers_.topLeft; }
    [[nodiscard]] const std::shared_ptr<View>& topRightControl() const { return markers_.topRight; }
    [[nodiscard]] const std::shared_ptr<View>& bottomLeftControl() const { return markers_.bottomLeft; }
    [[nodiscard]] const std::shared_ptr<View>& bottomRightControl() const { return markers_.bottomRight; }
    [[nodiscard]] const std::shared_ptr<View>& topLeftControl2() const { return markers2_.topLeft; }
    [[nodiscard]] const std::shared_ptr<View>& topRightControl2() const { return markers2_.topRight; }
    [[nodiscard]] const std::shared_ptr<View>& bottomLeftControl2() const { return markers2_.bottomLeft; }
    [[nodiscard]] const std::shared_ptr<View>& bottomRightControl2() const { return markers2_.bottomRight; }

    // Loading -------------------------------------------------------------------------------------------------------
    void viewDidLoad() override;
    [[nodiscard]] std::string mainDirectory() const;
    [[nodiscard]] Value JSONFromFile() const;
    /// The document of that name in the documents directory; nothing when it cannot be read or parsed.
    [[nodiscard]] Value ImportedJSONFromFile(const std::string& fileName) const;
    void getUserImports();
    /// Adds one imported definition under the name of its picture, in place of any definition of that name.
    void addImportData(const std::string& fileName);

    // Placement -----------------------------------------------------------------------------------------------------
    void setupPreviewTransforms();
    /// Places `performTransformForView` in perspective inside `applyToView`. Slot "2" of `contentView` is the second
    /// content view, every other one the first; `transformSide` ends and `finalCode` begins the definition's keys.
    void performTransformForView(const std::shared_ptr<View>& performTransformForView, std::string_view contentView,
                                 const std::shared_ptr<View>& applyToView, std::string_view transformSide,
                                 std::string_view finalCode, bool isLarge);

    // Markers -------------------------------------------------------------------------------------------------------
    std::shared_ptr<View> addControl(Point addControl, const std::shared_ptr<View>& toView);
    void dragMarker(PanGestureRecognizer& gesture);
    void updateTranform();

    // Options sheet -------------------------------------------------------------------------------------------------
    void optionsButtonClicked();
    void createActionSheet();
    void showDeleteAlert(const std::string& message);

    // Image sources -------------------------------------------------------------------------------------------------
    void addLeft();
    void addRight();
    void addBG();
    void imagePickerControllerDidFinishPickingMediaWithInfo(ImagePickerController& picker,
                                                            const PickedMedia& info) override;
    void blurBackground();

    // Edit panel ----------------------------------------------------------------------------------------------------
    void createEdits();
    void updateButtons();
    void editPressed(Button& sender);
    void alertCustom();
    void scaleUP(float scale);
    void frameOpacity(float opacity);
    void border(float width);

    // Composition ---------------------------------------------------------------------------------------------------
    /// Composes the picture, leaves it in `pendingImage` and shows it in `phone`.
    void generateImage();
    /// Replaces `contentView` by a flat picture of its bounding box; a box 2731 or taller goes the half-size way.
    void resetTransformedImageView();
    void resetTransformedImageViewOverAmount();
    /// Draws `contentView`, stretched, into a rectangle of the current canvas; nothing when no canvas is open.
    void drawerNewScreenImage(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height);
    [[nodiscard]] Image imageFromView(const std::shared_ptr<View>& view);
    void showTestImage(const Image& picture);
    /// Why the last composition or save is less than was asked for: an impossible canvas, corners that enclose nothing,
    /// a picture that is missing or cannot be decoded. One line, empty when all is well. Pictures are decoded when they
    /// are first drawn, so it knows all after `save`. The screens never show it.
    [[nodiscard]] std::string compositionProblem() const;

    // Saving and glare ----------------------------------------------------------------------------------------------
    void save();
    void showSavedAlert();
    void addGlare();

protected:
    std::shared_ptr<View> loadView() override;

private:
    struct MarkerSet {
        std::shared_ptr<View> topLeft;
        std::shared_ptr<View> topRight;
        std::shared_ptr<View> bottomLeft;
        std::shared_ptr<View> bottomRight;
    };
    struct ComposedPicture {
        std::string role;
        Image picture;
    };
    struct CompositionReport {
        std::vector<std::string> problems;
        std::vector<ComposedPicture> pictures;
    };
    struct PanelButton;

    // Layout and loading
    [[nodiscard]] std::shared_ptr<Button> makeToolButton(std::string toolTitle,
                                                         void (EditingViewController::*action)());
    void layOutFixedViews();
    void requestPhotoAuthorization();
    void applyDefinitionToControls();
    /// The picture among the application's resources, else the file of that name in the documents directory.
    [[nodiscard]] Image pictureNamed(const std::string& name);

    // Markers and options
    [[nodiscard]] std::string cornerReport(const MarkerSet& markers, std::string_view suffix) const;
    void fit(const std::shared_ptr<View>& view, const MarkerSet& markers);
    void deleteMockup(bool canDelete);
    Status removeDocument(const std::string& name, Status earlier);

    // Image sources
    void pick(bool& flag, bool allowsEditing);
    void deliverBackground(const PickedMedia& info);

    // Edit panel
    [[nodiscard]] std::shared_ptr<Button> addPanelButton(View& panel, const PanelButton& description);
    void applyNumber(int tag, const std::string& text);
    void moveMarker(int tag, double value);

    // Composition
    [[nodiscard]] Image composePicture();
    [[nodiscard]] std::shared_ptr<View> fullResolutionContainer(const MockupDefinition& definition);
    void placeScreens(const MockupDefinition& definition, const std::shared_ptr<View>& container);
    void drawFirstScreen();
    void drawSecondScreen(const Rect& canvas);
    void drawPicture(const std::string& role, const Image& picture, const Rect& rect);
    void logHalvingDifferences(const Rect& former, const Rect& now) const;
    void addPreviewOfComposite(const Image& picture);
    void checkDefinition(const MockupDefinition& definition);
    void noteProblem(std::string problem) { report_.problems.push_back(std::move(problem)); }
    void notePicture(std::string role, const Image& picture);
    void log(const std::string& line) const;

    // Saving
    void writeToPhotos(const Image& picture);
    void showInDesignScrollView(const Image& picture, const MockupDefinition& definition);

    [[nodiscard]] std::shared_ptr<EditingViewController> self();
    /// The action as long as the editor lives: a task that outlives it does nothing.
    template <typename Action> [[nodiscard]] std::function<void()> unlessGone(Action action) {
        return [weak = std::weak_ptr<EditingViewController>(self()), action = std::move(action)] {
            if (const auto editor = weak.lock())
                action(*editor);
        };
    }

    EditorState& state_;
    CatalogueDocument catalogue_;
    std::string imageInfo_;
    Value editInfo_;

    std::shared_ptr<ImageView> phone_;
    std::shared_ptr<ImageView> overlay_;
    std::shared_ptr<ImageView> inside1_;
    std::shared_ptr<ImageView> inside2_;
    std::shared_ptr<ImageView> background_;
    std::shared_ptr<Button> addLeftButton_;
    std::shared_ptr<Button> addRightButton_;
    std::shared_ptr<Button> addBGButton_;
    std::shared_ptr<Button> addGlareButton_;
    std::shared_ptr<Button> saveButton_;

    std::shared_ptr<View> contentView_;
    std::shared_ptr<View> contentView2_;
    MarkerSet markers_;
    MarkerSet markers2_;

    ContextStack contexts_;
    std::map<std::string, Image> resourcePictures_;
    std::map<std::string, Image> documentPictures_;
    CompositionReport report_;
};

} // namespace quillomat
