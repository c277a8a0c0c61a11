// The views with content of their own: pictures, labels, buttons, scroll views.
#pragma once

#include "platform/graphics/Image.h"
#include "platform/views/View.h"

#include <functional>
#include <map>
#include <string>

namespace quillomat {

class ImageView final : public View {
public:
    ImageView() { userInteractionEnabled = false; } // pictures let touches through unless told otherwise
    explicit ImageView(Image image) : ImageView() { image_ = std::move(image); }
    [[nodiscard]] std::string className() const override { return "UIImageView"; }
    [[nodiscard]] const Image& image() const { return image_; }
    void setImage(Image image) { image_ = std::move(image); }

private:
    Image image_;
};

struct Font {
    double size = 17;
    bool bold = false;
    friend bool operator==(const Font&, const Font&) = default;
};

enum class TextAlignment { left, center };

class Label final : public View {
public:
    Label() { userInteractionEnabled = false; }
    [[nodiscard]] std::string className() const override { return "UILabel"; }
    std::string text;
    Font font;
    Color textColor = Color::black();
    TextAlignment alignment = TextAlignment::left;
};

class TextView final : public View {
public:
    [[nodiscard]] std::string className() const override { return "UITextView"; }
    std::string text;
    Font font;
    Color textColor = Color::black();
    TextAlignment alignment = TextAlignment::left;
    bool editable = true;
    bool scrollEnabled = true;
};

enum class ControlState { normal, selected };

class Button final : public View {
public:
    using Action = std::function<void(Button&)>;

    [[nodiscard]] std::string className() const override { return "UIButton"; }
    /// The title for a state; the normal one where that state has none of its own.
    [[nodiscard]] std::string title(ControlState state = ControlState::normal) const;
    void setTitle(std::string title, ControlState state = ControlState::normal) { titles_[state] = std::move(title); }
    void setAction(Action touchUpInside) { action_ = std::move(touchUpInside); }
    bool enabled = true;
    Font font;
    TextAlignment alignment = TextAlignment::center;
    /// A host saw a press; ignored while disabled.
    void press();

private:
    std::map<ControlState, std::string> titles_;
    Action action_;
};

class ScrollView final : public View {
public:
    ScrollView() { masksToBounds = true; }
    [[nodiscard]] std::string className() const override { return "UIScrollView"; }
    [[nodiscard]] Point scrollOffset() const override { return contentOffset; }
    Size contentSize;
    Point contentOffset;
    bool canCancelContentTouches = true;
};

enum class StackDistribution { fill, fillEqually };

struct Insets {
    double top = 0, left = 0, bottom = 0, right = 0;
    friend bool operator==(const Insets&, const Insets&) = default;
};

/// A vertical column of arranged subviews, each with its required size, aligned at the leading edge.
class StackView final : public View {
public:
    [[nodiscard]] std::string className() const override { return "UIStackView"; }
    double spacing = 0;
    StackDistribution distribution = StackDistribution::fill;
    Insets layoutMargins;
    bool layoutMarginsRelativeArrangement = false;

    /// Adds it as the last of the column, and as a subview.
    void addArrangedSubview(const std::shared_ptr<View>& view, Size requiredSize);
    [[nodiscard]] const std::vector<std::shared_ptr<View>>& arrangedSubviews() const { return arranged_; }
    /// Gives every arranged subview its frame, and itself the size that holds them all. Subviews that have left are
    /// forgotten; distributed equally, all get the height of the tallest; negative sizes count as 0.
    void layout();

private:
    std::vector<std::shared_ptr<View>> arranged_;
    std::vector<Size> required_;
};

} // namespace quillomat
