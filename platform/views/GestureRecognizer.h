// Gesture recognisers: a host tells them what the finger did, they call their action.
#pragma once

#include "platform/foundation/Geometry.h"

#include <functional>
#include <memory>
#include <utility>

namespace quillomat {

class View;

class GestureRecognizer : public std::enable_shared_from_this<GestureRecognizer> {
public:
    virtual ~GestureRecognizer() = default;
    /// The view it is attached to; empty when that is gone.
    [[nodiscard]] std::shared_ptr<View> view() const { return view_.lock(); }

private:
    friend class View;
    std::weak_ptr<View> view_;
};

class TapGestureRecognizer final : public GestureRecognizer {
public:
    using Action = std::function<void(TapGestureRecognizer&)>;
    explicit TapGestureRecognizer(Action action) : action_(std::move(action)) {}
    int numberOfTapsRequired = 1;
    /// A host saw the tap; ignored when the view takes no interaction.
    void recognize();

private:
    Action action_;
};

class PanGestureRecognizer final : public GestureRecognizer {
public:
    using Action = std::function<void(PanGestureRecognizer&)>;
    explicit PanGestureRecognizer(Action action) : action_(std::move(action)) {}
    /// Movement since the last reset, in the root view's points.
    [[nodiscard]] Point translation() const { return translation_; }
    void setTranslation(Point translation) { translation_ = translation; }
    /// A host saw the finger move by `delta` in the root view; ignored when the view takes no interaction.
    void move(Point delta);

private:
    Action action_;
    Point translation_;
};

} // namespace quillomat
