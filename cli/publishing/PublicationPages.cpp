#include "cli/publishing/PublicationPages.h"

#include "editor/MockupDefinition.h"
#include "geometry/Homography.h"
#include "geometry/Quad.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"

#include <algorithm>
#include <cmath>

namespace quillomat {

namespace {

constexpr double previewSide = 640;
constexpr Color litScreen{0.82, 0.90, 0.89, 1};

constexpr const char* pageStart = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<title>@TITLE@</title>
<style>
:root { --ground: #f6f5f2; --card: #ffffff; --text: #1b1b1d; --quiet: #5c5c60; --accent: #0b7a75; }
@media (prefers-color-scheme: dark) {
  :root { --ground: #121214; --card: #1c1c1f; --text: #f2f1ee; --quiet: #a3a2a0; --accent: #3ec6be; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--ground); color: var(--text); font: 17px/1.45 system-ui, sans-serif; }
main, header, footer { max-width: 1120px; margin: 0 auto; padding: 16px; }
header { padding-top: 48px; }
h1 { font-size: 28px; line-height: 1.2; margin: 0 0 8px; }
h2 { font-size: 22px; line-height: 1.3; margin: 40px 0 12px; }
p { margin: 0 0 12px; max-width: 42em; }
a { color: var(--accent); }
.quiet, figcaption span { color: var(--quiet); font-size: 15px; }
.frames { display: grid; grid-template-columns: repeat(auto-fill, minmax(240px, 1fr)); gap: 16px; }
figure { margin: 0; padding: 16px; background: var(--card); border-radius: 20px; }
figure img { display: block; width: 100%; height: auto; aspect-ratio: 1; object-fit: contain; }
figcaption { margin-top: 12px; line-height: 1.3; overflow-wrap: anywhere; font-variant-numeric: tabular-nums; }
figcaption span { display: block; }
footer { padding-bottom: 48px; }
</style>
</head>
<body>
)";

std::string startPage(const std::string& title) {
    std::string start = pageStart;
    const std::string mark = "@TITLE@";
    return start.replace(start.find(mark), mark.size(), title);
}

/// "phone-graphite.png" as a caption: "Phone graphite"; the marker of the larger twin becomes a word.
std::string captionOf(const std::string& name) {
    std::string caption = name.ends_with(".png") ? name.substr(0, name.size() - 4) : name;
    std::replace(caption.begin(), caption.end(), '-', ' ');
    if (!caption.empty() && caption[0] >= 'a' && caption[0] <= 'z') {
        caption[0] = static_cast<char>(caption[0] - 'a' + 'A');
    }
    return caption;
}

std::string figureOf(const PublishedFrame& frame) {
    const double scale = previewSide / std::max(frame.canvas.width, frame.canvas.height);
    const auto side = [&](double pixels) { return std::to_string(std::lround(pixels * scale)); };
    const auto pixels = [](double value) { return std::to_string(std::lround(value)); };
    std::string text = "<figure>\n<img src=\"previews/" + escapeHtml(frame.name) + "\" alt=\"" +
                       escapeHtml(captionOf(frame.name)) + "\" width=\"" + side(frame.canvas.width) + "\" height=\"" +
                       side(frame.canvas.height) + "\" loading=\"lazy\">\n<figcaption>" +
                       escapeHtml(captionOf(frame.name)) + "<span>" + pixels(frame.canvas.width) + " × " +
                       pixels(frame.canvas.height) + (frame.screens == 2 ? ", two screens" : "") + "</span>";
    if (!frame.author.empty()) {
        text += "<span>by " + escapeHtml(frame.author) + "</span>";
    }
    return text + "</figcaption>\n</figure>\n";
}

void lightScreen(BitmapContext& canvas, const MockupDefinition& definition, const std::string& side, double scale) {
    const Quad stored = definition.storedCorners("F", side);
    const auto corner = [&](Point p) { return Point{(p.x + 10) * scale, (p.y + 10) * scale}; };
    const Point tl = corner(stored.topLeft);
    const Point tr = corner(stored.topRight);
    const Point bl = corner(stored.bottomLeft);
    const Point br = corner(stored.bottomRight);
    const Rect box = boundingBoxForQuadTR(tr, tl, bl, br);
    const Rect bounds{{0, 0}, box.size};
    LayerDraw screen;
    screen.map = Homography::fromTransform3D(
                     rectToQuad(bounds, tl - box.origin, tr - box.origin, bl - box.origin, br - box.origin))
                     .then(Homography::fromAffine(AffineTransform::translation(box.origin.x, box.origin.y)));
    screen.shape = {bounds, definition.keepsSquareCorners() ? 0 : definition.renderCornerRadius() * scale};
    screen.fill = litScreen;
    canvas.drawLayer(std::move(screen));
}

} // namespace

std::string escapeHtml(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
        case '&':
            escaped += "&amp;";
            break;
        case '<':
            escaped += "&lt;";
            break;
        case '>':
            escaped += "&gt;";
            break;
        case '"':
            escaped += "&quot;";
            break;
        default:
            escaped += c;
        }
    }
    return escaped;
}

std::string mockupsPage(const Publication& publication) {
    std::string page = startPage("Quillomat: all mockups");
    page += "<header>\n<h1>All mockups</h1>\n<p>Every frame of the catalogue. They arrive in the application with "
            "<em>Update Available</em>; put your screenshot into one there.</p>\n</header>\n<main>\n";
    std::string row;
    for (const auto& frame : publication.frames) {
        if (frame.row != row) {
            page += (row.empty() ? "" : "</div>\n</section>\n");
            row = frame.row;
            page += "<section>\n<h2>" + escapeHtml(row) + "</h2>\n<div class=\"frames\">\n";
        }
        page += figureOf(frame);
    }
    page += row.empty() ? "<p>There are no frames yet.</p>\n" : "</div>\n</section>\n";
    return page + "</main>\n<footer class=\"quiet\"><a href=\"../support/\">Support this free "
                  "app</a></footer>\n</body>\n</html>\n";
}

std::string supportPage() {
    return startPage("Support Quillomat") +
           "<header>\n<h1>Support this free app</h1>\n</header>\n<main>\n"
           "<p>Quillomat is free software, made by a few people in their own time. There is nothing to buy in it.</p>\n"
           "<p>Three things help it more than anything else: show your mockups and say what made them, send a frame of "
           "your own for the catalogue, and tell us when something looks wrong.</p>\n"
           "<p><a href=\"../mockups/\">See all mockups</a></p>\n</main>\n</body>\n</html>\n";
}

Result<Bytes> framePreview(World& world, const Publication& publication, const PublishedFrame& frame) {
    const auto path = publication.pictures.find(frame.picture);
    if (path == publication.pictures.end()) {
        return Failure{frame.picture + ": is missing"};
    }
    const auto picture = imageFromFile(world.files(), path->second, world.platform().imageLimits);
    if (!picture) {
        return Failure{frame.picture + ": " + picture.reason()};
    }
    const MockupDefinition definition(publication.catalogue["editInfo"][frame.name]);
    const double scale = std::min(1.0, previewSide / std::max(frame.canvas.width, frame.canvas.height));
    BitmapContext canvas(Size{std::round(frame.canvas.width * scale), std::round(frame.canvas.height * scale)});
    lightScreen(canvas, definition, "", scale);
    if (definition.hasSecondScreen()) {
        lightScreen(canvas, definition, "2", scale);
    }
    const Size frameSize = definition.frameRect().size;
    canvas.drawImage(*picture, makeRect(0, 0, frameSize.width * scale, frameSize.height * scale));
    return encodePng(canvas.makeImage());
}

} // namespace quillomat
