#include "catalogue/ScrollerViewController.h"

#include "catalogue/Gallery.h"
#include "catalogue/MockupEditing.h"
#include "platform/views/NavigationController.h"

namespace quillomat {

ScrollerViewController::ScrollerViewController(Platform& platform, Storyboard& storyboard)
    : ViewController(platform, storyboard), document_(platform) {}

void ScrollerViewController::viewDidLoad() {
    ViewController::viewDidLoad();
    viewInfo_ = JSONFromFile()["viewInfo"];
    getUserImports();
    createImageViews();
}

void ScrollerViewController::getUserImports() {
    for (const std::string& definition : importsWithPictures(document_)) {
        addImageToList(definition);
    }
}

void ScrollerViewController::addImageToList(const std::string& fileName) {
    viewInfo_ = withImport(viewInfo_, fileName);
}

void ScrollerViewController::createImageViews() {
    addScrollView();
    addStackView();
    const double width = view()->frame().size.width;
    for (const std::string& name : mockupNames(viewInfo_, contentInfo_)) {
        // Both sides come from the width, whatever the screen's height.
        stackView_->addArrangedSubview(makeImageView(name), Size{width, width - 100.0});
    }
    stackView_->layout();
    // The column is pinned at its leading edge only, so it never scrolls sideways.
    scrollView_->contentSize = Size{width, stackView_->bounds().size.height};
}

void ScrollerViewController::addScrollView() {
    scrollView_ = std::make_shared<ScrollView>();
    scrollView_->translatesAutoresizingMaskIntoConstraints = false;
    scrollView_->backgroundColor = Color::clear();
    scrollView_->setFrame(view()->bounds());
    view()->addSubview(scrollView_);
}

void ScrollerViewController::addStackView() {
    stackView_ = std::make_shared<StackView>();
    stackView_->spacing = 40.0;
    stackView_->distribution = StackDistribution::fillEqually;
    stackView_->translatesAutoresizingMaskIntoConstraints = false;
    stackView_->layoutMargins = Insets{.top = 40.0, .left = 0.0, .bottom = 40.0, .right = 0.0};
    stackView_->layoutMarginsRelativeArrangement = true;
    scrollView_->addSubview(stackView_);
}

std::shared_ptr<ImageView> ScrollerViewController::makeImageView(const std::string& name) {
    const auto picture = std::make_shared<ImageView>(document_.pictureNamed(lookupNameOfMockup(name)));
    picture->userInteractionEnabled = true;
    picture->accessibilityIdentifier = name;
    picture->translatesAutoresizingMaskIntoConstraints = false;
    picture->contentMode = ContentMode::scaleAspectFit;
    const std::weak_ptr<ViewController> weak = weak_from_this();
    const auto tap = std::make_shared<TapGestureRecognizer>([weak](TapGestureRecognizer& recognizer) {
        if (const auto gallery = std::static_pointer_cast<ScrollerViewController>(weak.lock())) {
            gallery->tapGesture(recognizer);
        }
    });
    tap->numberOfTapsRequired = 1;
    picture->addGestureRecognizer(tap);
    return picture;
}

void ScrollerViewController::tapGesture(TapGestureRecognizer& recognizer) {
    const auto tapped = recognizer.view();
    if (!tapped || navigationController() == nullptr) {
        return;
    }
    const auto screen = storyboard().instantiate("editingViewController");
    if (const auto editor = std::dynamic_pointer_cast<MockupEditing>(screen)) {
        editor->setImageInfo(tapped->accessibilityIdentifier);
    }
    navigationController()->push(screen);
}

std::string ScrollerViewController::mainDirectory() const {
    return document_.mainDirectory();
}

Value ScrollerViewController::JSONFromFile() const {
    return document_.JSONFromFile();
}

} // namespace quillomat
