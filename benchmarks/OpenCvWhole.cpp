#include "WholeJob.h"

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <cstdint>
#include <stdexcept>

namespace quillomat::benchmarks {

namespace {

cv::Mat load(const std::string& path, int flags) {
    cv::Mat image = cv::imread(path, flags);
    if (image.empty()) {
        throw std::runtime_error("cannot read " + path);
    }
    return image;
}

/// It has no blending of straight colours at an alpha; this is the loop that is written for it everywhere.
void blendOver(cv::Mat& canvas, const cv::Mat& layer) {
    cv::parallel_for_(cv::Range(0, canvas.rows), [&](const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            std::uint8_t* to = canvas.ptr(y);
            const std::uint8_t* from = layer.ptr(y);
            for (int x = 0; x < canvas.cols; ++x, to += 3, from += 4) {
                const int alpha = from[3];
                for (int c = 0; c < 3; ++c) {
                    const int sum = to[c] * (255 - alpha) + from[c] * alpha + 128;
                    to[c] = static_cast<std::uint8_t>((sum + (sum >> 8)) >> 8);
                }
            }
        }
    });
}

} // namespace

void doWholeJob(const WholeJob& job) {
    cv::setNumThreads(job.threads);
    cv::Mat background, screenshot, frame, glare;
    inParallel(
        job.threads,
        [&] {
            background = load(job.path("background.jpg"), cv::IMREAD_COLOR);
            glare = load(job.path("glare.png"), cv::IMREAD_UNCHANGED);
        },
        [&] {
            frame = load(job.path("frame.png"), cv::IMREAD_UNCHANGED);
            screenshot = load(job.path("screenshot.png"), cv::IMREAD_COLOR);
        });
    const int cut = std::min(background.cols, background.rows);
    const cv::Mat part = background(cv::Rect((background.cols - cut) / 2, (background.rows - cut) / 2, cut, cut));
    cv::Mat canvas;
    cv::resize(part, canvas, {job.side, job.side}, 0, 0, cv::INTER_LINEAR);

    const auto w = static_cast<float>(screenshot.cols);
    const auto h = static_cast<float>(screenshot.rows);
    const cv::Point2f from[4] = {{-0.5F, -0.5F}, {w - 0.5F, -0.5F}, {w - 0.5F, h - 0.5F}, {-0.5F, h - 0.5F}};
    cv::Point2f to[4];
    int i = 0;
    for (const Point p : {job.quad.topLeft, job.quad.topRight, job.quad.bottomRight, job.quad.bottomLeft}) {
        to[i++] = {static_cast<float>(p.x - 0.5), static_cast<float>(p.y - 0.5)};
    }
    cv::warpPerspective(screenshot, canvas, cv::getPerspectiveTransform(from, to), canvas.size(), cv::INTER_LINEAR,
                        cv::BORDER_TRANSPARENT);
    blendOver(canvas, frame);
    blendOver(canvas, glare);
    // Its own default, run lengths of one filter, is faster than libpng's level 1.
    if (!cv::imwrite(job.output, canvas)) {
        throw std::runtime_error("cannot write " + job.output);
    }
}

} // namespace quillomat::benchmarks
