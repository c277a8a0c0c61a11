#include "platform/views/Controls.h"

#include <algorithm>

namespace quillomat {

std::string Button::title(ControlState state) const {
    auto found = titles_.find(state);
    if (found == titles_.end())
        found = titles_.find(ControlState::normal);
    return found == titles_.end() ? std::string{} : found->second;
}

void Button::press() {
    if (!enabled || !action_)
        return;
    const auto self = weak_from_this().lock(); // the action may take the button away
    const Action action = action_;
    action(*this);
}

void StackView::addArrangedSubview(const std::shared_ptr<View>& view, Size requiredSize) {
    if (!view)
        return;
    const auto kept = view;
    addSubview(kept);
    if (kept->superview().get() != this)
        return;
    const auto place = std::find(arranged_.begin(), arranged_.end(), kept);
    if (place != arranged_.end()) {
        required_.erase(required_.begin() + (place - arranged_.begin()));
        arranged_.erase(place);
    }
    arranged_.push_back(kept);
    required_.push_back({std::max(0.0, requiredSize.width), std::max(0.0, requiredSize.height)});
}

void StackView::layout() {
    for (std::size_t i = arranged_.size(); i-- > 0;) {
        if (arranged_[i]->superview().get() == this)
            continue;
        arranged_.erase(arranged_.begin() + static_cast<std::ptrdiff_t>(i));
        required_.erase(required_.begin() + static_cast<std::ptrdiff_t>(i));
    }
    const Insets margins = layoutMarginsRelativeArrangement ? layoutMargins : Insets{};
    double widest = 0;
    double tallest = 0;
    for (const Size& size : required_) {
        widest = std::max(widest, size.width);
        tallest = std::max(tallest, size.height);
    }
    double y = margins.top;
    for (std::size_t i = 0; i < arranged_.size(); ++i) {
        const double height = distribution == StackDistribution::fillEqually ? tallest : required_[i].height;
        if (i > 0)
            y += spacing;
        arranged_[i]->setFrame(makeRect(margins.left, y, required_[i].width, height));
        y += height;
    }
    setFrame({frame().origin, {margins.left + widest + margins.right, y + margins.bottom}});
}

} // namespace quillomat
