#include "platform/views/GestureRecognizer.h"

#include "platform/views/View.h"

namespace quillomat {

namespace {

/// What an action may take away while it runs is held until it returns: the recogniser, its view, the action itself.
template <typename Recognizer, typename Action> void call(Recognizer& recognizer, const Action& action) {
    const auto self = recognizer.weak_from_this().lock();
    const auto view = recognizer.view();
    const Action kept = action;
    if (kept)
        kept(recognizer);
}

bool reaches(const GestureRecognizer& recognizer) {
    const auto view = recognizer.view();
    return view && view->takesInteraction();
}

} // namespace

void TapGestureRecognizer::recognize() {
    if (reaches(*this))
        call(*this, action_);
}

void PanGestureRecognizer::move(Point delta) {
    if (!reaches(*this))
        return;
    translation_ = translation_ + delta;
    call(*this, action_);
}

} // namespace quillomat
