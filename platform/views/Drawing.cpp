#include "platform/views/Drawing.h"

#include "platform/views/Controls.h"
#include "platform/views/ViewMap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>
#include <vector>

namespace quillomat {

namespace {

bool isFinite(const Rect& rect) {
    return std::isfinite(rect.minX()) && std::isfinite(rect.minY()) && std::isfinite(rect.maxX()) &&
           std::isfinite(rect.maxY());
}

bool hasExtent(const Rect& rect) {
    return !rect.isEmpty() && isFinite(rect);
}

/// Negative and undefined lengths and opacities count as none.
double positive(double number) {
    return number > 0 ? number : 0;
}

bool covers(const Rect& outer, const Rect& inner) {
    return outer.minX() <= inner.minX() && outer.minY() <= inner.minY() && outer.maxX() >= inner.maxX() &&
           outer.maxY() >= inner.maxY();
}

/// Where the whole picture lies. The side that fits takes the bounds' numbers themselves, so that rounding opens no
/// gap.
Rect pictureRectFor(const Rect& bounds, Size picture, ContentMode mode) {
    if (mode == ContentMode::scaleToFill)
        return bounds;
    const double byWidth = bounds.size.width / picture.width;
    const double byHeight = bounds.size.height / picture.height;
    Rect rect = bounds;
    if ((mode == ContentMode::scaleAspectFit) == (byWidth < byHeight)) {
        rect.size.height = picture.height * byWidth;
        rect.origin.y += (bounds.size.height - rect.size.height) / 2;
    } else {
        rect.size.width = picture.width * byHeight;
        rect.origin.x += (bounds.size.width - rect.size.width) / 2;
    }
    return rect;
}

/// Walks a tree and lists its draws, bottom to top, with maps that end in the context's user units.
class LayerLister {
public:
    LayerLister(const BitmapContext& context, Depth depth)
        : userToPixels_(context.userToPixels()), canvas_(context.pixelSize()), depth_(depth) {}

    using Clips = std::vector<ClipShape>;
    using Draws = std::vector<LayerDraw>;

    /// `map` takes the view's bounds to user units.
    void list(const View& view, const Homography& map, const Clips& clips, Draws& draws) const {
        const double opacity = std::min(positive(view.alpha), 1.0);
        if (view.hidden || opacity == 0 || !map.inverse())
            return;
        if (opacity == 1) {
            listContents(view, map, clips, draws);
            return;
        }
        Draws group;
        listContents(view, map, {}, group);
        fade(std::move(group), opacity, clips, draws);
    }

private:
    void listContents(const View& view, const Homography& map, const Clips& clips, Draws& draws) const;
    [[nodiscard]] std::optional<LayerDraw> pictureOf(const View& view) const;
    void fade(Draws group, double opacity, const Clips& clips, Draws& draws) const;
    [[nodiscard]] Rect pixelsTouched(const Draws& draws) const;

    Homography userToPixels_;
    PixelSize canvas_;
    Depth depth_;
};

/// The picture alone, in the shape it would have with nothing to cut it.
std::optional<LayerDraw> LayerLister::pictureOf(const View& view) const {
    const auto* holder = dynamic_cast<const ImageView*>(&view);
    if (holder == nullptr || !holder->image())
        return std::nullopt;
    const Size size = holder->image().size();
    if (!(size.width > 0 && size.height > 0))
        return std::nullopt;
    LayerDraw draw;
    draw.picture = holder->image();
    draw.pictureRect = pictureRectFor(view.bounds(), size, view.contentMode);
    draw.shape = {draw.pictureRect, 0};
    if (!hasExtent(draw.pictureRect))
        return std::nullopt;
    return draw;
}

// Background, picture and border share one draw, and so one coverage, where they share the shape: drawn one after the
// other, each would let the one below shine through its soft edge.
void LayerLister::listContents(const View& view, const Homography& map, const Clips& clips, Draws& draws) const {
    const bool extent = hasExtent(view.bounds());
    if (!extent && view.masksToBounds)
        return;
    const RoundedRect shape{view.bounds(), positive(view.cornerRadius)};
    Clips inside = clips;
    if (view.masksToBounds)
        inside.push_back({map, shape});

    auto picture = extent ? pictureOf(view) : std::nullopt;
    LayerDraw body;
    body.map = map, body.shape = shape, body.clips = clips;
    if (view.backgroundColor && view.backgroundColor->alpha > 0)
        body.fill = view.backgroundColor;
    const bool sameShape = picture && covers(picture->pictureRect, shape.rect) &&
                           (view.masksToBounds || (shape.radius == 0 && picture->pictureRect == shape.rect));
    if (sameShape) {
        body.picture = picture->picture, body.pictureRect = picture->pictureRect;
        picture.reset();
    } else if (picture && !view.masksToBounds && covers(picture->pictureRect, shape.rect) &&
               picture->picture.source()->isKnownOpaque()) {
        body.fill.reset(); // wholly hidden; it would only darken the edges
    }
    LayerDraw border;
    border.map = map, border.shape = shape, border.clips = clips;
    border.borderWidth = std::isfinite(view.borderWidth) ? positive(view.borderWidth) : 0;
    border.borderColor = view.borderColor;
    bool bordered = extent && border.borderWidth > 0 && border.borderColor.alpha > 0;
    if (bordered && !picture && view.subviews().empty()) {
        body.borderWidth = border.borderWidth, body.borderColor = border.borderColor;
        bordered = false;
    }

    if (extent && (body.fill || body.picture || body.borderWidth > 0))
        draws.push_back(std::move(body));
    if (picture) {
        picture->map = map, picture->clips = inside;
        draws.push_back(std::move(*picture));
    }
    for (const auto& subview : view.subviews())
        list(*subview, mapToSuperview(*subview, depth_).then(map), inside, draws);
    if (bordered)
        draws.push_back(std::move(border));
}

/// What lies below a translucent view is drawn as one picture, so that its layers do not shine through each other.
void LayerLister::fade(Draws group, double opacity, const Clips& clips, Draws& draws) const {
    if (group.empty())
        return;
    if (group.size() == 1) {
        LayerDraw& only = group.front();
        only.opacity *= opacity;
        only.clips.insert(only.clips.begin(), clips.begin(), clips.end());
        draws.push_back(std::move(only));
        return;
    }
    const auto pixelsToUser = userToPixels_.inverse();
    const Rect box = pixelsTouched(group);
    if (!pixelsToUser || box.isEmpty())
        return;
    const Homography toPicture =
        userToPixels_.then(Homography::fromAffine(AffineTransform::translation(-box.origin.x, -box.origin.y)));
    Recording recording({static_cast<int>(box.size.width), static_cast<int>(box.size.height)});
    for (LayerDraw& draw : group) {
        draw.map = draw.map.then(toPicture);
        for (ClipShape& clip : draw.clips)
            clip.map = clip.map.then(toPicture);
        recording.add(std::move(draw));
    }
    LayerDraw whole;
    whole.map = *pixelsToUser;
    whole.shape = {box, 0};
    whole.picture = imageOfRecording(std::move(recording));
    whole.pictureRect = box;
    whole.opacity = opacity;
    whole.clips = clips;
    draws.push_back(std::move(whole));
}

/// The whole pixels of the canvas that the draws can touch.
Rect LayerLister::pixelsTouched(const Draws& draws) const {
    const double width = canvas_.width;
    const double height = canvas_.height;
    double minX = width, minY = height, maxX = 0, maxY = 0;
    for (const LayerDraw& draw : draws) {
        const Homography map = draw.map.then(userToPixels_);
        const Rect& r = draw.shape.rect;
        for (const Point corner : {Point{r.minX(), r.minY()}, Point{r.maxX(), r.minY()}, Point{r.minX(), r.maxY()},
                                   Point{r.maxX(), r.maxY()}}) {
            const auto pixel = map.project(corner);
            if (!pixel)
                return makeRect(0, 0, width, height); // it reaches behind the viewer and may touch anything
            minX = std::min(minX, std::floor(pixel->x)), maxX = std::max(maxX, std::ceil(pixel->x));
            minY = std::min(minY, std::floor(pixel->y)), maxY = std::max(maxY, std::ceil(pixel->y));
        }
    }
    minX = std::max(minX, 0.0), maxX = std::min(maxX, width);
    minY = std::max(minY, 0.0), maxY = std::min(maxY, height);
    return makeRect(minX, minY, maxX - minX, maxY - minY);
}

void draw(const View& view, const Homography& map, Depth depth, BitmapContext& context) {
    LayerLister::Draws draws;
    LayerLister(context, depth).list(view, map, {}, draws);
    for (LayerDraw& layer : draws)
        context.drawLayer(std::move(layer));
}

} // namespace

bool drawViewHierarchy(const View& view, const Rect& rect, BitmapContext& context) {
    const Rect bounds = view.bounds();
    if (!hasExtent(bounds) || !hasExtent(rect) || context.pixelSize().isEmpty())
        return false;
    const AffineTransform stretch =
        AffineTransform::translation(-bounds.origin.x, -bounds.origin.y)
            .then(AffineTransform::scale(rect.size.width / bounds.size.width, rect.size.height / bounds.size.height))
            .then(AffineTransform::translation(rect.origin.x, rect.origin.y));
    draw(view, Homography::fromAffine(stretch), Depth::honoured, context);
    return true;
}

void renderInContext(const View& view, BitmapContext& context) {
    if (!context.pixelSize().isEmpty())
        draw(view, Homography{}, Depth::ignored, context);
}

} // namespace quillomat
