// What a render takes at most, told before anything is decoded, from the headers of its pictures.
#pragma once

#include "platform/graphics/ImageFile.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace quillomat {

/// Everything that a render's memory depends on. Documents are held by whoever opened them.
struct RenderPlan {
    struct Picture {
        ImageHeader header;
        std::uint64_t documentBytes = 0;
    };
    struct Screen {
        Picture screenshot;
        PixelSize box; // of the quad, on the canvas
    };
    struct Background {
        Picture picture;
        PixelRect cut;   // the whole picture where nothing is cut off
        PixelSize drawn; // on the canvas, or on the preview where it is blurred
        bool isBlurred = false;
    };
    /// The frame and the glare.
    struct Overlay {
        Picture picture;
        PixelSize drawn; // on the canvas
    };

    PixelSize canvas;
    std::vector<Screen> screens;
    std::optional<Background> background;
    std::vector<Overlay> overlays;
    /// What the first screen is drawn into on its way to the canvas; empty where it is drawn at once.
    PixelSize intermediate;
    bool smallestFile = false;
    bool keepsRecording = false;
    int threads = 1;
};

/// The program itself included. More than is taken in the end, and as a rule less than twice of it: how well the
/// pictures will deflate, and how empty the overlays are, no header says.
[[nodiscard]] std::uint64_t mostBytesOfRender(const RenderPlan& plan);

} // namespace quillomat
