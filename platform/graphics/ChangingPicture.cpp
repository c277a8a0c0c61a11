#include "platform/graphics/ChangingPicture.h"

#include "platform/foundation/Trace.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/LayerStack.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

namespace quillomat {

namespace {

using raster::Layer;
using raster::SampledArea;

/// A draw, and the layer made of it: none where it cannot be seen.
struct Prepared {
    LayerDraw draw;
    std::shared_ptr<Layer> layer;
};

bool isSame(const Recording& a, const Recording& b);

bool isSame(const Image& a, const Image& b) {
    if (a == b || !a || !b || a.scale() != b.scale()) {
        return a == b;
    }
    const Recording* inA = a.source()->recording();
    const Recording* inB = b.source()->recording();
    return inA && inB && isSame(*inA, *inB);
}

bool isSame(const LayerDraw& a, const LayerDraw& b) {
    return a.map == b.map && a.shape == b.shape && a.fill == b.fill && a.pictureRect == b.pictureRect &&
           a.filter == b.filter && a.borderWidth == b.borderWidth && a.borderColor == b.borderColor &&
           a.opacity == b.opacity && a.clips == b.clips && isSame(a.picture, b.picture);
}

bool isSame(const Recording& a, const Recording& b) {
    return a.size() == b.size() && std::equal(a.draws().begin(), a.draws().end(), b.draws().begin(), b.draws().end(),
                                              [](const auto& x, const auto& y) { return isSame(x, y); });
}

class Box {
public:
    void add(const std::shared_ptr<Layer>& layer) {
        if (layer) {
            const SampledArea& other = layer->area();
            area_ = {std::min(area_.left, other.left), std::min(area_.top, other.top),
                     std::max(area_.right, other.right), std::max(area_.bottom, other.bottom)};
        }
    }
    [[nodiscard]] SampledArea within(PixelSize canvas) const {
        const SampledArea cut{std::max(area_.left, 0), std::max(area_.top, 0), std::min(area_.right, canvas.width),
                              std::min(area_.bottom, canvas.height)};
        return cut.left < cut.right && cut.top < cut.bottom ? cut : SampledArea{};
    }

private:
    static constexpr int far = std::numeric_limits<int>::max();
    SampledArea area_{far, far, -far, -far};
};

/// For each new draw the index of the former one that it repeats. Draws that have come between or gone leave those
/// before and behind them as they are; in a part of equal length draws are compared one to one.
std::vector<std::optional<std::size_t>> repetitions(const std::vector<Prepared>& former,
                                                    const std::vector<LayerDraw>& now) {
    std::vector<std::optional<std::size_t>> result(now.size());
    const std::size_t common = std::min(former.size(), now.size());
    std::size_t start = 0;
    for (; start < common && isSame(former[start].draw, now[start]); ++start) {
        result[start] = start;
    }
    const std::size_t shift = former.size() - now.size(); // wraps round, and back when it is added
    std::size_t end = now.size();
    for (; end > start && end + shift > start && isSame(former[end - 1 + shift].draw, now[end - 1]); --end) {
        result[end - 1] = end - 1 + shift;
    }
    for (std::size_t i = start; shift == 0 && i < end; ++i) {
        if (isSame(former[i].draw, now[i])) {
            result[i] = i;
        }
    }
    return result;
}

} // namespace

struct ChangingPicture::Drawn {
    std::vector<Prepared> layers;
    raster::Pyramids pyramids;

    /// Takes over what is repeated and prepares the rest; gives the box of what is not.
    Box replace(const Recording& plain);
};

Box ChangingPicture::Drawn::replace(const Recording& plain) {
    const auto repeated = repetitions(layers, plain.draws());
    Recording fresh(plain.size());
    for (std::size_t i = 0; i < repeated.size(); ++i) {
        if (!repeated[i]) {
            fresh.add(plain.draws()[i]);
        }
    }
    // The former layers are still there, and with them the pixels of pictures that are only drawn elsewhere now.
    const Recording decoded = withDecodedPictures(fresh);
    Box changed;
    std::vector<Prepared> now;
    auto next = decoded.draws().begin();
    for (std::size_t i = 0; i < repeated.size(); ++i) {
        if (repeated[i]) {
            Prepared& kept = layers[*repeated[i]];
            if (kept.layer) {
                kept.layer->keepPixels();
            }
            now.push_back(std::exchange(kept, {}));
            continue;
        }
        Prepared made{plain.draws()[i], nullptr};
        if (auto layer = Layer::make(*next++, plain.size(), raster::bestKernels(), pyramids)) {
            made.layer = std::make_shared<Layer>(std::move(*layer));
        }
        changed.add(made.layer);
        now.push_back(std::move(made));
    }
    for (const Prepared& gone : layers) {
        changed.add(gone.layer);
    }
    layers = std::move(now);
    return changed;
}

ChangingPicture::ChangingPicture(int threads) : threads_(threads), drawn_(std::make_unique<Drawn>()) {}

ChangingPicture::~ChangingPicture() = default;

PixelRect ChangingPicture::draw(const Recording& recording) {
    const trace::Span span("draw changes");
    const PixelSize size = recording.size();
    const bool isResized = size != bitmap_.size();
    const bool isNew = isResized || drawn_->layers.empty();
    // The former layers live until the new ones are made: these may share their pictures.
    const auto former = isResized ? std::exchange(drawn_, std::make_unique<Drawn>()) : nullptr;
    const Box changed = drawn_->replace(flattened(recording));
    if (isResized) {
        bitmap_ = Bitmap(size);
    }
    if (size.isEmpty()) {
        return {};
    }
    const SampledArea area = isNew ? SampledArea{0, 0, size.width, size.height} : changed.within(size);
    raster::LayerStack stack(size);
    for (const Prepared& prepared : drawn_->layers) {
        if (prepared.layer) {
            stack.add(prepared.layer);
        }
    }
    stack.drawOn(bitmap_, area, threads_);
    return {area.left, area.top, area.right - area.left, area.bottom - area.top};
}

} // namespace quillomat
