#include "platform/graphics/ReferenceRenderer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

// Nothing here is shared with the rasteriser but the shapes of the values: a yardstick that leaned on what it measures
// would agree with its mistakes. Everything is in double until the canvas is rounded once, at the end.

namespace quillomat {

namespace {

using Outline = std::vector<Point>;
using Pixel = std::array<double, 4>; // premultiplied, 0 ... 255

constexpr int segmentsPerArc = 256;

struct HomogeneousPoint {
    double x = 0;
    double y = 0;
    double w = 0;
};

double radiusOf(const RoundedRect& shape) {
    return shape.radius > 0 ? std::min({shape.radius, shape.rect.size.width / 2, shape.rect.size.height / 2}) : 0;
}

Outline outlineOf(const RoundedRect& shape) {
    const Rect& r = shape.rect;
    if (r.isEmpty()) {
        return {};
    }
    const double radius = radiusOf(shape);
    const Point centers[4] = {{r.maxX() - radius, r.minY() + radius},
                              {r.maxX() - radius, r.maxY() - radius},
                              {r.minX() + radius, r.maxY() - radius},
                              {r.minX() + radius, r.minY() + radius}};
    Outline outline;
    for (int quarter = 0; quarter < 4; ++quarter) {
        for (int i = 0; i <= (radius > 0 ? segmentsPerArc : 0); ++i) {
            const double angle = (quarter - 1 + static_cast<double>(i) / segmentsPerArc) * std::numbers::pi / 2;
            const Point center = centers[quarter];
            outline.push_back({center.x + radius * std::cos(angle), center.y + radius * std::sin(angle)});
        }
    }
    return outline;
}

/// The projected outline; what lies behind the viewer is cut off before the division.
Outline projected(const Homography& map, const Outline& outline) {
    std::vector<HomogeneousPoint> points;
    double farthest = 0;
    for (const Point& p : outline) {
        const HomogeneousPoint h{p.x * map.m[0] + p.y * map.m[3] + map.m[6], p.x * map.m[1] + p.y * map.m[4] + map.m[7],
                                 map.w(p)};
        if (!std::isfinite(h.x) || !std::isfinite(h.y) || !std::isfinite(h.w)) {
            return {};
        }
        farthest = std::max(farthest, std::abs(h.w));
        points.push_back(h);
    }
    const double nearest = farthest * 1e-9;
    Outline result;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const HomogeneousPoint& a = points[i];
        const HomogeneousPoint& b = points[(i + 1) % points.size()];
        if (a.w > nearest) {
            result.push_back({a.x / a.w, a.y / a.w});
        }
        if ((a.w > nearest) != (b.w > nearest)) {
            const double t = (nearest - a.w) / (b.w - a.w);
            result.push_back({(a.x + (b.x - a.x) * t) / nearest, (a.y + (b.y - a.y) * t) / nearest});
        }
    }
    return result;
}

double area(const Outline& outline) {
    double twice = 0;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        // About the first corner, so that far-away outlines lose no digits.
        const Point a = outline[i] - outline[0];
        const Point b = outline[(i + 1) % outline.size()] - outline[0];
        twice += a.x * b.y - b.x * a.y;
    }
    return twice / 2;
}

/// The part of the outline with a x + b y <= c.
Outline halfPlane(const Outline& in, double a, double b, double c) {
    Outline out;
    for (std::size_t i = 0; i < in.size(); ++i) {
        const Point p = in[i];
        const Point q = in[(i + 1) % in.size()];
        const double sideP = a * p.x + b * p.y - c;
        const double sideQ = a * q.x + b * q.y - c;
        if (sideP <= 0) {
            out.push_back(p);
        }
        if ((sideP < 0 && sideQ > 0) || (sideP > 0 && sideQ < 0)) {
            const double t = sideP / (sideP - sideQ);
            out.push_back({p.x + (q.x - p.x) * t, p.y + (q.y - p.y) * t});
        }
    }
    return out;
}

Outline insideOf(Outline outline, const Outline& convex) {
    const double turn = area(convex) >= 0 ? 1 : -1;
    for (std::size_t i = 0; i < convex.size(); ++i) {
        const Point p = convex[i];
        const Point along = convex[(i + 1) % convex.size()] - p;
        outline = halfPlane(outline, turn * along.y, -turn * along.x, turn * (along.y * p.x - along.x * p.y));
    }
    return convex.size() < 3 ? Outline{} : outline;
}

double coveredArea(const Outline& strip, int x) {
    return std::clamp(std::abs(area(halfPlane(halfPlane(strip, -1, 0, -x), 1, 0, x + 1.0))), 0.0, 1.0);
}

Pixel texel(const Bitmap& picture, int x, int y) {
    const std::uint8_t* p = picture.row(std::clamp(y, 0, picture.height() - 1)) +
                            static_cast<std::ptrdiff_t>(std::clamp(x, 0, picture.width() - 1)) * 4;
    return {static_cast<double>(p[0]), static_cast<double>(p[1]), static_cast<double>(p[2]), static_cast<double>(p[3])};
}

void addScaled(Pixel& sum, const Pixel& pixel, double weight) {
    for (std::size_t i = 0; i < 4; ++i) {
        sum[i] += pixel[i] * weight;
    }
}

Pixel bilinear(const Bitmap& picture, double u, double v) {
    const auto bounded = [](double value, int extent) {
        return value > -2 ? (value < extent + 2.0 ? value : extent + 2.0) : -2.0;
    };
    u = bounded(u, picture.width()) - 0.5;
    v = bounded(v, picture.height()) - 0.5;
    const int x = static_cast<int>(std::floor(u));
    const int y = static_cast<int>(std::floor(v));
    Pixel sum{};
    addScaled(sum, texel(picture, x, y), (1 - (u - x)) * (1 - (v - y)));
    addScaled(sum, texel(picture, x + 1, y), (u - x) * (1 - (v - y)));
    addScaled(sum, texel(picture, x, y + 1), (1 - (u - x)) * (v - y));
    addScaled(sum, texel(picture, x + 1, y + 1), (u - x) * (v - y));
    return sum;
}

double cubic(double t) {
    t = std::abs(t);
    return t < 1 ? 1.5 * t * t * t - 2.5 * t * t + 1 : t < 2 ? -0.5 * t * t * t + 2.5 * t * t - 4 * t + 2 : 0;
}

/// A picture on the canvas, by one of the three ways that a picture is drawn.
class PictureOnCanvas {
public:
    PictureOnCanvas(SharedBitmap picture, const LayerDraw& draw, int samplesPerSide)
        : picture_(std::move(picture)), samples_(samplesPerSide) {
        const Rect& rect = draw.pictureRect;
        const AffineTransform placed{rect.size.width / picture_->width(),
                                     0,
                                     0,
                                     rect.size.height / picture_->height(),
                                     rect.origin.x,
                                     rect.origin.y};
        toCanvas_ = Homography::fromAffine(placed).then(draw.map);
        inverse_ = toCanvas_.inverse();
        const auto& m = toCanvas_.m;
        along_ = m[1] == 0 && m[2] == 0 && m[3] == 0 && m[5] == 0;
        const auto whole = [](double value) { return std::abs(value - std::round(value)) < 1e-3; };
        copied_ = along_ && whole(m[6] / m[8]) && whole(m[7] / m[8]) &&
                  std::abs((m[0] / m[8] - 1) * picture_->width()) < 1e-3 &&
                  std::abs((m[4] / m[8] - 1) * picture_->height()) < 1e-3;
        smooth_ = along_ && draw.filter == PictureFilter::smooth;
    }

    [[nodiscard]] bool isVisible() const { return inverse_.has_value(); }

    [[nodiscard]] Pixel at(int x, int y) const {
        const auto& m = toCanvas_.m;
        if (copied_) {
            return texel(*picture_, x - static_cast<int>(std::lround(m[6] / m[8])),
                         y - static_cast<int>(std::lround(m[7] / m[8])));
        }
        return smooth_ ? cubicAt(x, y) : averageAt(x, y);
    }

private:
    /// The cubic kernel, as wide as the canvas pixel where that is wider than the picture's.
    [[nodiscard]] Pixel cubicAt(int x, int y) const {
        const auto& m = toCanvas_.m;
        const double centerU = (x + 0.5 - m[6] / m[8]) / (m[0] / m[8]) - 0.5;
        const double centerV = (y + 0.5 - m[7] / m[8]) / (m[4] / m[8]) - 0.5;
        const double spreadU = std::max(1.0, std::abs(m[8] / m[0]));
        const double spreadV = std::max(1.0, std::abs(m[8] / m[4]));
        Pixel sum{};
        double weights = 0;
        for (int v = static_cast<int>(std::floor(centerV - 2 * spreadV)); v <= centerV + 2 * spreadV; ++v) {
            for (int u = static_cast<int>(std::floor(centerU - 2 * spreadU)); u <= centerU + 2 * spreadU; ++u) {
                const double weight = cubic((u - centerU) / spreadU) * cubic((v - centerV) / spreadV);
                addScaled(sum, texel(*picture_, u, v), weight);
                weights += weight;
            }
        }
        for (double& channel : sum) {
            channel = std::clamp(channel / weights, 0.0, 255.0);
        }
        for (double& channel : sum) {
            channel = std::min(channel, sum[3]);
        }
        return sum;
    }

    [[nodiscard]] Pixel averageAt(int x, int y) const {
        const auto& m = inverse_->m;
        Pixel sum{};
        int seen = 0;
        for (int j = 0; j < samples_; ++j) {
            for (int i = 0; i < samples_; ++i) {
                const double px = x + (i + 0.5) / samples_;
                const double py = y + (j + 0.5) / samples_;
                const double w = px * m[2] + py * m[5] + m[8];
                if (w > 0) {
                    addScaled(
                        sum,
                        bilinear(*picture_, (px * m[0] + py * m[3] + m[6]) / w, (px * m[1] + py * m[4] + m[7]) / w), 1);
                    ++seen;
                }
            }
        }
        for (double& channel : sum) {
            channel /= std::max(seen, 1);
        }
        return sum;
    }

    SharedBitmap picture_;
    int samples_;
    Homography toCanvas_;
    std::optional<Homography> inverse_;
    bool along_ = false;
    bool copied_ = false;
    bool smooth_ = false;
};

Pixel over(const Pixel& above, const Pixel& below) {
    Pixel result{};
    for (std::size_t i = 0; i < 4; ++i) {
        result[i] = above[i] + below[i] * (1 - above[3] / 255);
    }
    return result;
}

Pixel premultiplied(const Color& color) {
    const auto unit = [](double value) { return value > 0 ? std::min(value, 1.0) : 0.0; };
    const double alpha = unit(color.alpha) * 255;
    return {unit(color.red) * alpha, unit(color.green) * alpha, unit(color.blue) * alpha, alpha};
}

SharedBitmap pixelsOf(const Image& image, const ReferenceQuality& quality) {
    if (const Recording* inner = image.source()->recording()) {
        return std::make_shared<const Bitmap>(renderReference(*inner, quality));
    }
    return image.bitmap();
}

class Canvas {
public:
    Canvas(PixelSize size, const ReferenceQuality& quality) : size_(size), quality_(quality), pixels_(size.area()) {}

    void draw(const LayerDraw& draw) {
        Outline shape = projected(draw.map, outlineOf(draw.shape));
        for (const ClipShape& clip : draw.clips) {
            shape = insideOf(std::move(shape), projected(clip.map, outlineOf(clip.shape)));
        }
        const bool bordered = draw.borderWidth > 0;
        Outline inner = shape;
        if (bordered) {
            const Rect& r = draw.shape.rect;
            const double b = draw.borderWidth;
            inner =
                insideOf(shape, projected(draw.map, outlineOf({makeRect(r.minX() + b, r.minY() + b,
                                                                        r.size.width - 2 * b, r.size.height - 2 * b),
                                                               std::max(0.0, radiusOf(draw.shape) - b)})));
        }
        Outline pictured;
        std::optional<PictureOnCanvas> picture;
        const SharedBitmap pixels = draw.picture ? pixelsOf(draw.picture, quality_) : nullptr;
        if (pixels && !pixels->size().isEmpty() && !draw.pictureRect.isEmpty()) {
            picture.emplace(pixels, draw, quality_.samplesPerSide);
            if (picture->isVisible()) {
                pictured = insideOf(shape, projected(draw.map, outlineOf({draw.pictureRect, 0})));
            }
        }
        const Outline picturedInner = bordered ? insideOf(pictured, inner) : pictured;
        for (int y = 0; y < size_.height; ++y) {
            drawRow(y, draw, {strip(shape, y), strip(inner, y), strip(pictured, y), strip(picturedInner, y)}, picture);
        }
    }

    [[nodiscard]] const std::vector<Pixel>& pixels() const { return pixels_; }
    [[nodiscard]] Bitmap rounded() const {
        Bitmap bitmap(size_);
        for (std::size_t i = 0; i < pixels_.size(); ++i) {
            for (std::size_t channel = 0; channel < 4; ++channel) {
                bitmap.bytes()[i * 4 + channel] =
                    static_cast<std::uint8_t>(std::clamp(pixels_[i][channel] + 0.5, 0.0, 255.0));
            }
        }
        return bitmap;
    }

private:
    struct Strips {
        Outline shape;
        Outline inner;
        Outline pictured;
        Outline picturedInner;
    };

    [[nodiscard]] Outline strip(const Outline& outline, int y) const {
        Outline cut = halfPlane(halfPlane(outline, 0, -1, -y), 0, 1, y + 1.0);
        return halfPlane(halfPlane(cut, -1, 0, 0), 1, 0, size_.width);
    }

    void drawRow(int y, const LayerDraw& draw, const Strips& strips, const std::optional<PictureOnCanvas>& picture) {
        if (strips.shape.size() < 3) {
            return;
        }
        const auto [lowest, highest] =
            std::minmax_element(strips.shape.begin(), strips.shape.end(), [](Point a, Point b) { return a.x < b.x; });
        const double opacity = draw.opacity > 0 ? std::min(draw.opacity, 1.0) : 0;
        const Pixel fill = draw.fill ? premultiplied(*draw.fill) : Pixel{};
        const Pixel border = draw.borderWidth > 0 ? premultiplied(draw.borderColor) : Pixel{};
        const int last = std::min(size_.width - 1, static_cast<int>(std::floor(highest->x)));
        for (int x = std::max(0, static_cast<int>(std::floor(lowest->x))); x <= last; ++x) {
            const double whole = coveredArea(strips.shape, x);
            if (whole <= 0) {
                continue;
            }
            const double inner = coveredArea(strips.inner, x);
            const double pictured = coveredArea(strips.pictured, x);
            const double both = coveredArea(strips.picturedInner, x);
            const Pixel content = pictured > 0 ? over(picture->at(x, y), fill) : fill;
            Pixel sum{};
            addScaled(sum, content, both);
            addScaled(sum, fill, inner - both);
            addScaled(sum, over(border, content), pictured - both);
            addScaled(sum, over(border, fill), whole - inner - pictured + both);
            for (double& channel : sum) {
                channel *= opacity;
            }
            Pixel& under = pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(size_.width) +
                                   static_cast<std::size_t>(x)];
            under = over(sum, under);
        }
    }

    PixelSize size_;
    ReferenceQuality quality_;
    std::vector<Pixel> pixels_;
};

Canvas drawn(const Recording& recording, const ReferenceQuality& quality) {
    Canvas canvas(recording.size(), quality);
    for (const LayerDraw& draw : recording.draws()) {
        canvas.draw(draw);
    }
    return canvas;
}

} // namespace

Bitmap renderReference(const Recording& recording, const ReferenceQuality& quality) {
    return drawn(recording, quality).rounded();
}

std::vector<Pixel> renderUnrounded(const Recording& recording, const ReferenceQuality& quality) {
    return drawn(recording, quality).pixels();
}

} // namespace quillomat
