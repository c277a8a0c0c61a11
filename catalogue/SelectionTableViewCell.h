// One row of the catalogue list: a preview picture and three labels.
#pragma once

#include "platform/views/Controls.h"
#include "platform/views/View.h"

#include <memory>
#include <string>

namespace quillomat {

class SelectionTableViewCell final : public View {
public:
    static constexpr double height = 119.0;

    /// Lays the outlets out in a row of that width.
    [[nodiscard]] static std::shared_ptr<SelectionTableViewCell> make(double width);

    explicit SelectionTableViewCell(const Rect& frame) : View(frame) {}
    [[nodiscard]] std::string className() const override { return "SelectionTableViewCell"; }

    // The cell owns its outlets as subviews and refers to them weakly.
    [[nodiscard]] std::shared_ptr<Label> sizeLabel() const { return sizeLabel_.lock(); }
    [[nodiscard]] std::shared_ptr<ImageView> previewImage() const { return previewImage_.lock(); }
    [[nodiscard]] std::shared_ptr<Label> descLabel() const { return descLabel_.lock(); }
    [[nodiscard]] std::shared_ptr<Label> typeLabel() const { return typeLabel_.lock(); }

    void awakeFromNib() {}
    void setSelectedAnimated(bool selected, bool /*animated*/) { selected_ = selected; }
    [[nodiscard]] bool isSelected() const { return selected_; }

private:
    void layOut();

    std::weak_ptr<Label> sizeLabel_;
    std::weak_ptr<ImageView> previewImage_;
    std::weak_ptr<Label> descLabel_;
    std::weak_ptr<Label> typeLabel_;
    bool selected_ = false;
};

} // namespace quillomat
