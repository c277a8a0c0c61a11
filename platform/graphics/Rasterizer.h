// Turns recordings into pixels, in bands of rows, on any number of threads, with the same bits.
//
// How a draw reaches the canvas:
//  1. `flattened` (Recording.h) pulls out the draws of recordings that lie unscaled inside this one; a scaled one is
//     rasterised once, as a picture.
//  2. `withDecodedPictures` (DrawnPictures.h) decodes what is drawn, reduced where that leaves no trace; an overlay
//     that lies on the canvas's pixels is read into runs (`SparsePicture`). Where each row is drawn but once, a
//     background is decoded as its rows are drawn (`raster/StreamedPicture.h`). A photograph that is drawn much smaller
//     is left in its planes (`PlanarPicture`).
//  3. `visibleOutline` (raster/ConvexPolygon.h) flattens the layer's rounded rectangle in its own units, projects it,
//     and cuts it to positive w and to the canvas: what remains is convex. `intersection` cuts it to the clips.
//  4. `Coverage` (raster/Coverage.h) holds that one outline's exact area per pixel, row by row, times the opacity.
//     Fill, picture and border of a layer share it, so that edges are blended once.
//  5. `makeSampler` (raster/Sampler.h) chooses where the picture's pixels come from: a copy under a whole-pixel shift,
//     a separable stretch along the axes, else a sheared separable footprint that follows the map's derivative.
//     `Pyramid` halves pictures that are shrunk too far for the tables of small weights (`columnTable`, `rowTable`).
//  6. `Layer::drawRow` (raster/Layer.h) puts the row's pixels over the canvas's, copying where both allow it and
//     passing over runs of nothing.
//  7. `Kernels` (raster/Kernels.h) are the hot loops of 5 and 6, in integers: each variant gives the same bits.
//  8. `LayerStack::drawRows` runs 4 to 7 for a band of rows; `drawOn` shares the rows out among threads. No row depends
//     on another, and no pixel on how much of its row is drawn.
//
// Not supported: blend modes other than "over", linear light, shapes that are not convex, subpixel text, more than 8
// bits a channel, a picture's pixels on the far side of the horizon (w <= 0).
#pragma once

#include "platform/graphics/Bitmap.h"
#include "platform/graphics/Recording.h"

#include <cstdint>
#include <memory>
#include <span>

namespace quillomat {

/// How often each row will be asked for. Where it is once, a background is decoded as its rows are drawn.
enum class RowUse { any, once };

/// Prepared once per recording; `rows` may then be called from several threads at once.
class Rasterizer {
public:
    /// `threads` decode pictures; 0 means one per core.
    explicit Rasterizer(const Recording& recording, RowUse use = RowUse::any, int threads = 0);
    ~Rasterizer();
    Rasterizer(const Rasterizer&) = delete;
    Rasterizer& operator=(const Rasterizer&) = delete;

    /// Writes rows [first, first + count) as packed premultiplied RGBA into `out` (count x width x 4 bytes), replacing
    /// what is there.
    void rows(int first, int count, std::span<std::uint8_t> out) const;
    /// Decodes what will be drawn later, while there is room to keep it and no other thread does so. Only one can
    /// decode at a time, and rows wait for it: threads that share the rows had better call this each time before they
    /// take some.
    void decodeAhead() const;
    /// When the last row has been drawn: whether they show what they should. Not, where a background that was decoded
    /// meanwhile turned out damaged; they are to be drawn afresh then, by a rasteriser for `RowUse::any`.
    [[nodiscard]] bool finish() const;
    /// The most memory that was taken at a time by backgrounds that are decoded meanwhile.
    [[nodiscard]] std::size_t mostBytesOfStreams() const;
    friend void rasterizeOnto(Bitmap& canvas, const Recording& recording, int threads);

private:
    struct Plan;
    std::unique_ptr<Plan> plan_;
};

/// The whole canvas; `threads` 0 means one per core.
[[nodiscard]] Bitmap rasterize(const Recording& recording, int threads = 0);
/// The same into a canvas of that size, replacing what is there.
void rasterizeOnto(Bitmap& canvas, const Recording& recording, int threads = 0);

} // namespace quillomat
