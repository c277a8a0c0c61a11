#include "cli/publishing/PublicationPages.h"

#include "editor/MockupDefinition.h"
#include "geometry/Homography.h"
#include "geometry/Quad.h"
#include "platform/foundation/Conversions.h"
#include "platform/graphics/BitmapContext.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace quillomat {

namespace {

constexpr double previewSide = 640;

/// What the lit screens show: the accent's own light, from its deep tone at the top left to a pale one.
Image litScreen() {
    constexpr std::array<std::array<double, 3>, 3> tones{{{11, 122, 117}, {86, 178, 168}, {226, 240, 234}}};
    Bitmap picture(PixelSize{96, 192});
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const double way = 0.3 * x / picture.width() + 1.7 * y / picture.height();
            const std::size_t from = way < 1 ? 0 : 1;
            const double share = way - static_cast<double>(from);
            std::uint8_t* pixel = picture.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            for (std::size_t i = 0; i < 3; ++i) {
                pixel[i] = static_cast<std::uint8_t>(
                    std::lround(tones[from][i] + (tones[from + 1][i] - tones[from][i]) * share));
            }
            pixel[3] = 255;
        }
    }
    return Image::fromBitmap(std::move(picture));
}

constexpr const char* pageStart = R"html(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<meta name="theme-color" content="#f6f5f2" media="(prefers-color-scheme: light)">
<meta name="theme-color" content="#121214" media="(prefers-color-scheme: dark)">
<title>@TITLE@</title>
<style>
:root {
  --ground: #f6f5f2; --card: #ffffff; --text: #1b1b1d; --quiet: #5f5f62; --accent: #0b7a75;
  --well: #ffffff; --rim: #eae8e2; --shadow: 0 1px 2px rgb(27 27 29 / 5%), 0 8px 24px rgb(27 27 29 / 6%);
}
@media (prefers-color-scheme: dark) {
  :root {
    --ground: #121214; --card: #1c1c1f; --text: #f2f1ee; --quiet: #a3a2a0; --accent: #3ec6be;
    --well: #5a5a60; --rim: #2a2a2e; --shadow: none;
  }
}
* { box-sizing: border-box; }
html { scroll-behavior: smooth; -webkit-text-size-adjust: 100%; }
@media (prefers-reduced-motion: reduce) { html { scroll-behavior: auto; } }
body { margin: 0; background: var(--ground); color: var(--text); font: 17px/1.45 system-ui, sans-serif; }
header, main, footer { max-width: 1152px; margin: 0 auto; padding: 0 16px; }
header { padding-top: 48px; }
main { padding-bottom: 48px; }
.mark { display: block; width: 56px; height: 56px; margin-bottom: 16px; }
h1 { font-size: 28px; line-height: 1.2; font-weight: 600; letter-spacing: -0.01em; margin: 0 0 8px; }
h2 { font-size: 22px; line-height: 1.3; font-weight: 600; letter-spacing: -0.005em; margin: 0; }
p { margin: 0 0 12px; max-width: 42em; }
a { color: var(--accent); text-underline-offset: 0.15em; }
a:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; border-radius: 22px; }
.quiet, section > p { color: var(--quiet); font-size: 15px; }
nav { display: flex; flex-wrap: wrap; gap: 8px; margin-top: 20px; }
nav a { padding: 10px 16px; min-height: 44px; border-radius: 22px; background: var(--card);
  box-shadow: var(--shadow); font-size: 15px; line-height: 24px; text-decoration: none; }
section { padding-top: 40px; }
section > p { margin: 4px 0 0; }
.frames { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(200px, 44%), 1fr)); gap: 16px;
  margin-top: 16px; }
@media (max-width: 480px) { .frames { gap: 12px; } }
figure { margin: 0; padding: 8px; background: var(--card); border-radius: 20px; box-shadow: var(--shadow); }
figure img { display: block; width: 100%; height: auto; aspect-ratio: 1; object-fit: contain; border-radius: 12px;
  background: radial-gradient(circle at 50% 42%, var(--well) 0, var(--rim) 72%); }
figcaption { padding: 12px 8px 8px; line-height: 1.3; overflow-wrap: anywhere; }
figcaption span { display: block; margin-top: 2px; font-size: 13px; color: var(--quiet);
  font-variant-numeric: tabular-nums; }
.note { background: var(--card); border-radius: 20px; box-shadow: var(--shadow); padding: 20px 24px;
  margin: 0 0 12px; max-width: 44em; }
.note:first-child { margin-top: 20px; }
.note h2 { font-size: 17px; margin-bottom: 4px; }
.note p { margin: 0; color: var(--quiet); }
footer { padding-bottom: 48px; }
</style>
</head>
<body>
)html";

/// A screen seen in perspective under a reflection, as on the application's icon.
constexpr const char* logo = R"html(<svg class="mark" viewBox="0 0 56 56" aria-hidden="true">
<rect width="56" height="56" rx="13" fill="#0b7a75"/>
<path d="M18 12.5 37 9.2q3-.5 3.3 2.4l3.1 29.6q.3 2.8-2.3 3.6l-17.6 4q-2.8.6-3.4-2.2L15.6 16.2q-.5-3.1 2.4-3.7z"
 fill="#f6f5f2"/>
<path d="M16.2 20.4 35.6 9.5l4.9 2.4 1.1 10.8-21.6 19z" fill="#0b7a75" fill-opacity=".16"/>
</svg>
)html";

std::string startPage(const std::string& title) {
    std::string start = pageStart;
    const std::string mark = "@TITLE@";
    return start.replace(start.find(mark), mark.size(), title);
}

/// "phone-graphite-large.png" as a caption: "Phone graphite, large".
std::string captionOf(const std::string& name) {
    std::string caption = name.ends_with(".png") ? name.substr(0, name.size() - 4) : name;
    if (caption.ends_with("-large")) {
        caption.insert(caption.size() - 6, ",");
    }
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

/// Jumps to the rows; a single row needs none.
std::string linksTo(const std::vector<std::string>& rows) {
    if (rows.size() < 2) {
        return {};
    }
    std::string links = "<nav aria-label=\"Rows\">\n";
    for (std::size_t row = 0; row < rows.size(); ++row) {
        links += "<a href=\"#row-" + std::to_string(row + 1) + "\">" + escapeHtml(rows[row]) + "</a>\n";
    }
    return links + "</nav>\n";
}

std::string sectionOf(const Publication& publication, const std::string& title, std::size_t number) {
    std::string section =
        "<section id=\"row-" + std::to_string(number + 1) + "\">\n<h2>" + escapeHtml(title) + "</h2>\n";
    for (const auto& row : publication.catalogue["tableItems"].elements()) {
        if (describe(row["typeLabel"]) == title && row["descLabel"].isString()) {
            section += "<p>" + escapeHtml(row["descLabel"].stringValue()) + "</p>\n";
            break;
        }
    }
    section += "<div class=\"frames\">\n";
    for (const auto& frame : publication.frames) {
        section += frame.row == title ? figureOf(frame) : "";
    }
    return section + "</div>\n</section>\n";
}

std::string noteOf(const std::string& title, const std::string& text) {
    return "<div class=\"note\">\n<h2>" + title + "</h2>\n<p>" + text + "</p>\n</div>\n";
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
    screen.picture = litScreen();
    screen.pictureRect = bounds;
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
    std::vector<std::string> rows;
    for (const auto& frame : publication.frames) {
        if (std::find(rows.begin(), rows.end(), frame.row) == rows.end()) {
            rows.push_back(frame.row);
        }
    }
    std::string page = startPage("Quillomat: all mockups");
    page += std::string("<header>\n") + logo +
            "<h1>All mockups</h1>\n<p>Every frame there is for your screenshots. New ones come to the application with "
            "<em>Update Available</em>.</p>\n" +
            linksTo(rows) + "</header>\n<main>\n" + (rows.empty() ? "<p>There are no frames yet.</p>\n" : "");
    for (std::size_t row = 0; row < rows.size(); ++row) {
        page += sectionOf(publication, rows[row], row);
    }
    return page + "</main>\n<footer><p class=\"quiet\"><a href=\"../support/\">Support this free app</a></p></footer>\n"
                  "</body>\n</html>\n";
}

std::string supportPage() {
    return startPage("Support Quillomat") + "<header>\n" + logo +
           "<h1>Support this free app</h1>\n"
           "<p>Quillomat is free software, made by a few people in their own time. There is nothing to buy in it. "
           "Three things help it more than anything else.</p>\n</header>\n<main>\n" +
           noteOf("Show your mockups", "And say what made them: that is how others find the application.") +
           noteOf("Send a frame",
                  "Measured and drawn by you, in the catalogue for everybody, with your name beside it.") +
           noteOf("Say what looks wrong",
                  "A jagged edge, a screen that does not meet its frame, a word that misleads.") +
           "</main>\n<footer><p class=\"quiet\"><a href=\"../mockups/\">See all mockups</a></p></footer>\n"
           "</body>\n</html>\n";
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
