#include "platform/graphics/raster/LayerStack.h"

#include "platform/foundation/Crew.h"
#include "platform/foundation/SharedRange.h"
#include "platform/foundation/Trace.h"

#include <algorithm>
#include <cstring>

namespace quillomat::raster {

namespace {

// As many as share footprints.
constexpr int bandRows = 16;

} // namespace

void LayerStack::drawRows(int first, int count, const Span& columns, std::uint8_t* out, LayerScratch& scratch) const {
    trace::Span span("draw rows");
    span.note("first", first);
    span.note("count", count);
    const std::size_t stride = static_cast<std::size_t>(canvas_.width) * 4;
    std::vector<Span> hidden(layers_.size());
    for (int y = first; y < first + count; ++y) {
        // From the top down: the widest run of pixels that a layer above replaces.
        Span widest;
        for (std::size_t i = hidden.size(); i-- > 0;) {
            hidden[i] = widest;
            const Span here = layers_[i]->hiddenBelow(y, scratch);
            widest = here.length() > widest.length() ? here : widest;
        }
        std::uint8_t* const row = out + stride * static_cast<std::size_t>(y - first);
        if (widest.left > columns.left || widest.right < columns.right) {
            std::memset(row + static_cast<std::ptrdiff_t>(columns.left) * 4, 0,
                        static_cast<std::size_t>(columns.length()) * 4);
        }
        for (std::size_t i = 0; i < hidden.size(); ++i) {
            layers_[i]->drawRow(y, columns, hidden[i], row, scratch);
        }
    }
}

void LayerStack::drawOn(Bitmap& picture, const SampledArea& area, int threads) const {
    const Span columns{area.left, area.right};
    const int bands = (area.bottom - area.top + bandRows - 1) / bandRows;
    const int workers = std::min(threadsFor(threads), bands);
    SharedRange rows(area.top, area.bottom, bandRows, workers);
    Crew::shared().run(workers, [&] {
        LayerScratch scratch;
        rows.workThrough([&](const SharedRange::Piece& band) {
            drawRows(band.begin, band.length(), columns, picture.row(band.begin), scratch);
        });
    });
}

} // namespace quillomat::raster
