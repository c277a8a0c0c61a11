// A person at the application, without a screen: launch, choose, tap, pick, answer, and look at what stands there.
#pragma once

#include "FakePlatform.h"
#include "app/Application.h"
#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "editor/EditingViewController.h"
#include "hosts/headless/HeadlessHost.h"
#include "platform/graphics/PngWriter.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace quillomat::testing {

/// One launch of the application over a platform, which may outlive it: a second launch finds what the first stored.
class Session {
public:
    explicit Session(FakePlatform& world) : world_(world), application_(world.platform) { application_.launch(); }

    /// The catalogue that the tests draw for themselves, copied into the platform's resources.
    static void installCatalogue(FakePlatform& world) {
        std::filesystem::copy(QUILLOMAT_SOURCE_DIR "/tests/fixtures/catalogue", world.resourcesDirectory(),
                              std::filesystem::copy_options::recursive |
                                  std::filesystem::copy_options::overwrite_existing);
    }

    [[nodiscard]] HeadlessHost host() { return {application_.navigationController(), world_.queue}; }
    [[nodiscard]] Application& application() { return application_; }
    [[nodiscard]] EditorState& state() { return application_.editorState(); }
    [[nodiscard]] std::size_t depth() { return application_.navigationController().stack().size(); }

    [[nodiscard]] SelectionTableViewController& list() {
        return dynamic_cast<SelectionTableViewController&>(*application_.navigationController().root());
    }
    [[nodiscard]] ScrollerViewController& gallery() {
        return dynamic_cast<ScrollerViewController&>(*application_.navigationController().top());
    }
    [[nodiscard]] std::shared_ptr<EditingViewController> editor() {
        return std::dynamic_pointer_cast<EditingViewController>(application_.navigationController().top());
    }

    /// Chooses the row of that title.
    void choose(const std::string& row) {
        for (std::size_t i = 0; i < list().tableItems().count(); ++i) {
            if (list().tableItems().at(i)["typeLabel"].stringValue() == row) {
                list().tableViewDidSelectRowAtIndexPath({0, i});
                return;
            }
        }
        throw std::runtime_error("no row " + row);
    }

    /// The mockup names that the gallery on top shows, in order.
    [[nodiscard]] std::vector<std::string> shownMockups() {
        std::vector<std::string> names;
        for (const auto& picture : gallery().stackView()->arrangedSubviews()) {
            names.push_back(picture->accessibilityIdentifier);
        }
        return names;
    }

    void tapFrame(const std::string& mockup) {
        for (const auto& picture : gallery().stackView()->arrangedSubviews()) {
            if (picture->accessibilityIdentifier == mockup) {
                host().tap(*picture);
                return;
            }
        }
        throw std::runtime_error("no frame " + mockup);
    }

    /// From the list straight into the editor.
    std::shared_ptr<EditingViewController> open(const std::string& row, const std::string& mockup) {
        choose(row);
        tapFrame(mockup);
        return editor();
    }

    void backToTheList() {
        while (depth() > 1) {
            host().goBack();
        }
    }

    /// Picks a picture that a button asked for; the photograph and its cut are the same.
    void pick(const std::shared_ptr<Button>& button, const Image& picture, const Image& edited = {}) {
        button->press();
        host().pick({picture, edited});
    }

private:
    FakePlatform& world_;
    Application application_;
};

inline Image plainPicture(Rgba color, int width = 40, int height = 60) {
    Bitmap bitmap(PixelSize{width, height});
    for (std::size_t i = 0; i < bitmap.bytes().size(); ++i) {
        bitmap.bytes()[i] = color[i % 4];
    }
    return Image::fromBitmap(std::move(bitmap));
}

inline Rgba pixelOf(const Image& image, int x, int y) {
    const auto bitmap = image.bitmap();
    if (!bitmap || x < 0 || y < 0 || x >= bitmap->width() || y >= bitmap->height()) {
        throw std::runtime_error("no such pixel");
    }
    const auto* pixel = bitmap->row(y) + static_cast<std::size_t>(x) * 4;
    return {pixel[0], pixel[1], pixel[2], pixel[3]};
}

} // namespace quillomat::testing
