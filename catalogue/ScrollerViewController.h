// The gallery of one catalogue row: a column of frame pictures, the user's imports included.
#pragma once

#include "catalogue/CatalogueDocument.h"
#include "platform/foundation/Value.h"
#include "platform/views/Controls.h"
#include "platform/views/GestureRecognizer.h"
#include "platform/views/ViewController.h"

#include <memory>
#include <string>

namespace quillomat {

/// Built once, when its view loads: imports made meanwhile show in the next gallery.
class ScrollerViewController final : public ViewController {
public:
    ScrollerViewController(Platform& platform, Storyboard& storyboard);

    /// The row's "typeLabel", the key of what is shown; set before the view loads.
    [[nodiscard]] const std::string& contentInfo() const { return contentInfo_; }
    void setContentInfo(std::string contentInfo) { contentInfo_ = std::move(contentInfo); }
    /// Row key to gallery entry, with the user's imports added to "Imported".
    [[nodiscard]] const Value& viewInfo() const { return viewInfo_; }

    void viewDidLoad() override;
    void getUserImports();
    void addImageToList(const std::string& fileName);
    void createImageViews();
    void tapGesture(TapGestureRecognizer& recognizer);
    /// The documents directory, without a trailing separator.
    [[nodiscard]] std::string mainDirectory() const;
    [[nodiscard]] Value JSONFromFile() const;

    // Null before the view has loaded.
    [[nodiscard]] const std::shared_ptr<ScrollView>& scrollView() const { return scrollView_; }
    [[nodiscard]] const std::shared_ptr<StackView>& stackView() const { return stackView_; }

private:
    void addScrollView();
    void addStackView();
    [[nodiscard]] std::shared_ptr<ImageView> makeImageView(const std::string& name);

    CatalogueDocument document_;
    std::string contentInfo_;
    Value viewInfo_;
    std::shared_ptr<ScrollView> scrollView_;
    std::shared_ptr<StackView> stackView_;
};

} // namespace quillomat
