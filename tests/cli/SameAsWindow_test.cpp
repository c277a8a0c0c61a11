// The command writes, byte for byte, what a person at the window would have saved.
#include "Command.h"

#include "app/Application.h"
#include "catalogue/ScrollerViewController.h"
#include "catalogue/SelectionTableViewController.h"
#include "editor/EditingViewController.h"
#include "hosts/desktop/FolderPhotoLibrary.h"
#include "hosts/desktop/PlainDocumentAccess.h"
#include "hosts/headless/HeadlessHost.h"
#include "platform/graphics/Cropping.h"

namespace quillomat {
namespace {

using testing::Ran;
using testing::Rgba;

/// The window's world with a host that presses and picks: the same resources and documents as the command's, and the
/// photo library of the desktop.
struct Person {
    Person(const std::string& resources, const std::string& documents, const std::string& pictures)
        : bundle(resources)
        , photos(pictures, files, [] { return std::string("2026-01-01 00.00.00"); })
        , platform{files, bundle, web, photos, access, urls, queue, log, {}, {}, documents, {}} {
        application.launch();
    }

    /// From the list through the gallery into the editor.
    std::shared_ptr<EditingViewController> open(std::size_t row, const std::string& mockup) {
        auto& navigation = application.navigationController();
        dynamic_cast<SelectionTableViewController&>(*navigation.root()).tableViewDidSelectRowAtIndexPath({0, row});
        const auto gallery = std::dynamic_pointer_cast<ScrollerViewController>(navigation.top());
        for (const auto& picture : gallery->stackView()->arrangedSubviews()) {
            if (picture->accessibilityIdentifier == mockup) {
                host().tap(*picture);
                break;
            }
        }
        return std::dynamic_pointer_cast<EditingViewController>(navigation.top());
    }
    HeadlessHost host() { return {application.navigationController(), queue}; }
    Image read(const std::string& path) const {
        const auto image = imageFromFile(files, path);
        return image ? *image : Image();
    }
    /// Presses Save and gives the picture's file.
    std::string save(EditingViewController& editor) {
        editor.saveButton()->press();
        EXPECT_TRUE(host().press("Thanks!"));
        return photos.lastWrite() ? testing::contentOfFile(*photos.lastWrite()) : photos.lastWrite().reason();
    }

    SystemFileManager files;
    DirectoryBundle bundle;
    NoWebClient web;
    FolderPhotoLibrary photos;
    PlainDocumentAccess access;
    HeadlessUrlOpener urls;
    SteppedMainQueue queue;
    SilentLog log;
    Platform platform;
    Application application{platform};
};

class SameAsWindowTest : public testing::CommandTest {
protected:
    std::string shot = addPicture("shot.png", 320, 690, [](int x, int y) {
        return (x / 7 + y / 5) % 3 == 0
                   ? Rgba{250, 240, 230, 255}
                   : Rgba{static_cast<std::uint8_t>(x % 256), static_cast<std::uint8_t>(y % 256), 90, 255};
    });
    std::string second = addPicture("second.png", 300, 600, [](int x, int y) {
        return Rgba{20, static_cast<std::uint8_t>((x + y) % 256), 200, 255};
    });
    std::string wide = addPicture("wide.png", 900, 500, [](int x, int y) {
        return Rgba{static_cast<std::uint8_t>(x / 4), static_cast<std::uint8_t>(y / 2), 60, 255};
    });
    std::string pictures = folder.path("pictures");

    void expectSame(testing::Words words, const std::string& saved) const {
        words.insert(words.begin(), "render");
        words.insert(words.end(), {"-o", "-"});
        const Ran ran = run(words);
        EXPECT_EQ(ran.status, 0) << ran.err;
        EXPECT_GT(saved.size(), 1000U);
        EXPECT_TRUE(ran.out == saved) << "the command's " << ran.out.size() << " bytes are not the window's "
                                      << saved.size();
    }
    static void pickShot(Person& person, EditingViewController& editor, const std::string& path) {
        editor.addLeftButton()->press();
        ASSERT_TRUE(person.host().pick({person.read(path), {}}));
    }
    static void pickBackground(Person& person, EditingViewController& editor, const std::string& path,
                               const std::string& blur) {
        const Image whole = person.read(path);
        editor.addBGButton()->press();
        ASSERT_TRUE(person.host().pick({whole, croppedImage(whole, centredCrop(whole.pixelSize(), {480, 480}))}));
        person.host().advance(std::chrono::milliseconds(200));
        ASSERT_TRUE(person.host().press(blur));
    }
};

TEST_F(SameAsWindowTest, oneScreenInPerspective) {
    Person person(resources, documents, pictures);
    const auto editor = person.open(0, "tilted.png");
    pickShot(person, *editor, shot);
    expectSame({"tilted", "-s", shot}, person.save(*editor));
}

TEST_F(SameAsWindowTest, aBackgroundAndGlare) {
    Person person(resources, documents, pictures);
    const auto editor = person.open(0, "upright.png");
    pickShot(person, *editor, shot);
    pickBackground(person, *editor, wide, "No");
    editor->addGlareButton()->press();
    expectSame({"upright", "-s", shot, "-b", wide, "--glare"}, person.save(*editor));
}

TEST_F(SameAsWindowTest, aBlurredBackground) {
    Person person(resources, documents, pictures);
    const auto editor = person.open(0, "upright.png");
    pickBackground(person, *editor, wide, "Yes");
    pickShot(person, *editor, shot);
    expectSame({"upright", "-s", shot, "-b", wide, "--blur"}, person.save(*editor));
}

TEST_F(SameAsWindowTest, twoScreens) {
    Person person(resources, documents, pictures);
    const auto editor = person.open(1, "duo.png");
    pickShot(person, *editor, shot);
    editor->addRightButton()->press();
    ASSERT_TRUE(person.host().pick({person.read(second), {}}));
    expectSame({"duo", "-s", shot, "-s", second}, person.save(*editor));
}

TEST_F(SameAsWindowTest, aLargeNameAndAVeryTallScreen) {
    Person person(resources, documents, pictures);
    for (const char* name : {"pair-large.png", "tall.png"}) {
        const auto editor = person.open(0, name);
        pickShot(person, *editor, shot);
        expectSame({name, "-s", shot}, person.save(*editor));
    }
}

TEST_F(SameAsWindowTest, anImportWithAnAuthorIsComposedAsItsScreenshotIsPicked) {
    import("credited", "Ada");
    Person person(resources, documents, pictures);
    const auto editor = person.open(2, "credited.png");
    pickShot(person, *editor, shot);
    expectSame({"credited", "-s", shot}, person.save(*editor));
}

} // namespace
} // namespace quillomat
