// The whole job as a command does it: decode four files, compose, write a PNG. One small program for each peer.
#pragma once

#include "geometry/Quad.h"

#include <cstddef>
#include <string>
#include <thread>

namespace quillomat::benchmarks {

struct WholeJob {
    std::string folder; // with background.jpg, screenshot.png, frame.png and glare.png
    int side = 0;       // of the canvas, the frame and the glare
    int threads = 1;
    std::string output;
    Quad quad; // of the screenshot

    [[nodiscard]] std::string path(const char* name) const { return folder + "/" + name; }
};

/// Whoever wraps the peer says how; throws what it cannot.
void doWholeJob(const WholeJob& job);

/// Runs both, on two threads where there may be two.
template <typename First, typename Second> void inParallel(int threads, const First& first, const Second& second) {
    if (threads < 2) {
        first();
        second();
        return;
    }
    std::thread other(second);
    first();
    other.join();
}

/// Writes opaque pixels as libpng does at level 1 with its default filters: four bytes a pixel, blue first.
void writeByLibpng(const std::string& path, const unsigned char* pixels, int side, std::size_t stride);

} // namespace quillomat::benchmarks
