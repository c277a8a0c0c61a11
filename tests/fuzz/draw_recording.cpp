// Recordings of any kind are drawn, and to the same bits: by plain loops, by every kind of processor's kernels, in
// bands of any height, on several threads, and piece by piece as they change.
#include "DrawnRecordings.h"
#include "EveryTarget.h"
#include "platform/graphics/ChangingPicture.h"
#include "platform/graphics/DrawnPictures.h"
#include "platform/graphics/raster/LayerStack.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace quillomat;

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// The bytes, and then others that follow from them.
testing::Dice diceOf(const std::uint8_t* data, std::size_t size) {
    return testing::Dice([data, size, at = std::size_t{0}]() mutable {
        const std::size_t now = at++;
        return now < size ? data[now] : static_cast<std::uint8_t>(now * 167 + size * 13);
    });
}

Bitmap drawnPlainly(const Recording& recording) {
    const PixelSize canvas = recording.size();
    raster::LayerStack stack(canvas);
    raster::Pyramids pyramids;
    const Recording plain = withDecodedPictures(flattened(recording), 1);
    for (const LayerDraw& draw : plain.draws()) {
        if (auto layer = raster::Layer::make(draw, canvas, raster::scalarKernels(), pyramids)) {
            stack.add(std::make_shared<const raster::Layer>(std::move(*layer)));
        }
    }
    Bitmap bitmap(canvas);
    stack.drawOn(bitmap, {0, 0, canvas.width, canvas.height}, 1);
    return bitmap;
}

Bitmap drawnInBands(const Recording& recording, testing::Dice& dice) {
    const Rasterizer rasterizer(recording);
    Bitmap bitmap(recording.size());
    for (int top = 0; top < bitmap.height();) {
        const int count = std::min(dice.between(1, 40), bitmap.height() - top);
        rasterizer.rows(top, count, bitmap.bytes().subspan(bitmap.stride() * static_cast<std::size_t>(top)));
        top += count;
    }
    return bitmap;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    testing::Dice dice = diceOf(data, size);
    const Recording recording = testing::dicedRecording(dice);
    const Bitmap plain = drawnPlainly(recording);
    testing::onEveryTarget([&](const char* /*target*/) { require(rasterize(recording, 1) == plain); });
    require(rasterize(recording, 3) == plain);
    require(drawnInBands(recording, dice) == plain);
    if (recording.provesOpaque()) {
        require(plain.isOpaque());
    }

    // The same with a draw taken away, one put in and one moved, as a preview changes.
    ChangingPicture changing(1);
    static_cast<void>(changing.draw(recording));
    require(changing.bitmap() == plain);
    Recording changed(recording.size());
    for (const LayerDraw& draw : recording.draws()) {
        const int what = dice.below(4);
        if (what == 0) {
            continue;
        }
        changed.add(draw);
        if (what == 1) {
            changed.add(testing::dicedDraw(dice, recording.size(), 1));
        }
    }
    static_cast<void>(changing.draw(changed));
    require(changing.bitmap() == rasterize(changed, 1));
    return 0;
}
