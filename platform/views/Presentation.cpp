#include "platform/views/Presentation.h"

#include <atomic>

namespace quillomat {

namespace {

PresentationId nextId() {
    static std::atomic<PresentationId> last{0};
    return ++last;
}

} // namespace

Presentation::Presentation() : id_(nextId()) {}

void AlertController::addAction(std::string title, ActionStyle style, std::function<void()> handler) {
    actions_.push_back({std::move(title), style, std::move(handler)});
}

} // namespace quillomat
