#include "Peers.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace quillomat::benchmarks {

namespace {

cv::Mat matOf(const Bitmap& bitmap) {
    cv::Mat mat(bitmap.height(), bitmap.width(), CV_8UC4);
    std::copy(bitmap.bytes().begin(), bitmap.bytes().end(), mat.data);
    return mat;
}

cv::Mat mapOnto(const Quad& quad, const cv::Mat& image) {
    // Its pixel centres are whole numbers.
    const auto w = static_cast<float>(image.cols);
    const auto h = static_cast<float>(image.rows);
    const cv::Point2f from[4] = {{-0.5F, -0.5F}, {w - 0.5F, -0.5F}, {w - 0.5F, h - 0.5F}, {-0.5F, h - 0.5F}};
    cv::Point2f to[4];
    int i = 0;
    for (const Point p : {quad.topLeft, quad.topRight, quad.bottomRight, quad.bottomLeft}) {
        to[i++] = {static_cast<float>(p.x - 0.5), static_cast<float>(p.y - 0.5)};
    }
    return cv::getPerspectiveTransform(from, to);
}

/// Premultiplied source over destination, as its own vectorised element-wise operations are meant to be used: one loop
/// per pair of rows handed to its thread pool.
void blendOver(cv::Mat& canvas, const cv::Mat& layer) {
    cv::parallel_for_(cv::Range(0, canvas.rows), [&](const cv::Range& rows) {
        for (int y = rows.start; y < rows.end; ++y) {
            std::uint8_t* to = canvas.ptr(y);
            const std::uint8_t* from = layer.ptr(y);
            for (int x = 0; x < canvas.cols; ++x, to += 4, from += 4) {
                const int rest = 255 - from[3];
                for (int c = 0; c < 4; ++c) {
                    const int product = to[c] * rest + 128;
                    to[c] = static_cast<std::uint8_t>(from[c] + ((product + (product >> 8)) >> 8));
                }
            }
        }
    });
}

class OpenCvPeer final : public Peer {
public:
    explicit OpenCvPeer(const Scene& scene)
        : background_(matOf(*scene.background))
        , screenshot_(matOf(*scene.screenshot))
        , frame_(matOf(*scene.frame))
        , glare_(matOf(*scene.glare))
        , quad_(scene.quad)
        , canvas_(scene.side, scene.side, CV_8UC4) {}

    void compose(int threads) override {
        cv::setNumThreads(threads);
        cv::resize(background_, canvas_, canvas_.size(), 0, 0, cv::INTER_LINEAR);
        cv::warpPerspective(screenshot_, canvas_, mapOnto(quad_, screenshot_), canvas_.size(), cv::INTER_LINEAR,
                            cv::BORDER_TRANSPARENT);
        blendOver(canvas_, frame_);
        blendOver(canvas_, glare_);
    }

    [[nodiscard]] Bitmap result() const override {
        Bitmap bitmap({canvas_.cols, canvas_.rows});
        std::copy_n(canvas_.data, bitmap.bytes().size(), bitmap.bytes().begin());
        return bitmap;
    }

private:
    cv::Mat background_;
    cv::Mat screenshot_;
    cv::Mat frame_;
    cv::Mat glare_;
    Quad quad_;
    cv::Mat canvas_;
};

} // namespace

std::unique_ptr<Peer> makeOpenCvPeer(const Scene& scene) {
    return std::make_unique<OpenCvPeer>(scene);
}

Bitmap warpWithOpenCv(const Bitmap& picture, const Quad& quad, PixelSize size) {
    const cv::Mat image = matOf(picture);
    cv::Mat canvas(size.height, size.width, CV_8UC4, cv::Scalar(0, 0, 0, 0));
    cv::warpPerspective(image, canvas, mapOnto(quad, image), canvas.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    Bitmap bitmap(size);
    std::copy_n(canvas.data, bitmap.bytes().size(), bitmap.bytes().begin());
    return bitmap;
}

} // namespace quillomat::benchmarks
