// Prints how near the renderer, and its peers where they are built, come to the truth: exact area coverage at edges,
// the average over the pixel's square of the linearly interpolated picture inside. Inside, the truth is not rounded to
// whole numbers: the truth itself in 8 bits would score 58.9 dB where every value occurs.
#include "Scene.h"
#include "platform/graphics/Blur.h"
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/ReferenceRenderer.h"
#ifdef QUILLOMAT_WITH_PEERS
#include "Peers.h"
#endif

#include <array>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quillomat::benchmarks {
namespace {

struct Score {
    double inside = 0;    // dB over the pixels that are whole in the truth
    double edgeAlpha = 0; // dB over the pixels that are neither whole nor empty
    int largestEdge = 0;  // of alpha
    int outside = 0;      // pixels drawn where the truth has nothing
};

double decibels(double squares, std::size_t count) {
    return squares > 0 ? 10 * std::log10(255.0 * 255.0 * static_cast<double>(count) / squares) : 99;
}

class Judge {
public:
    explicit Judge(const Recording& recording) : exact_(renderUnrounded(recording)) {}

    [[nodiscard]] Score scoreOf(const Bitmap& drawn) const;

private:
    std::vector<std::array<double, 4>> exact_;
};

Score Judge::scoreOf(const Bitmap& drawn) const {
    Score score;
    double insideSquares = 0, edgeSquares = 0;
    std::size_t insideCount = 0, edgeCount = 0;
    for (std::size_t i = 0; i < drawn.bytes().size(); i += 4) {
        const std::array<double, 4>& truth = exact_[i / 4];
        const auto alpha = static_cast<int>(truth[3] + 0.5);
        const int difference = std::abs(alpha - drawn.bytes()[i + 3]);
        if (alpha == 255) {
            for (std::size_t c = 0; c < 3; ++c) {
                const double d = truth[c] - drawn.bytes()[i + c];
                insideSquares += d * d;
            }
            insideCount += 3;
        } else if (alpha > 0) {
            edgeSquares += difference * difference;
            ++edgeCount;
            score.largestEdge = std::max(score.largestEdge, difference);
        } else if (difference > 1) {
            ++score.outside;
        }
    }
    score.inside = decibels(insideSquares, insideCount);
    score.edgeAlpha = decibels(edgeSquares, edgeCount);
    return score;
}

void printScore(const std::string& name, const char* who, const Score& score) {
    std::printf("%-34s %-10s %8.1f %8.1f %8d %8d\n", name.c_str(), who, score.inside, score.edgeAlpha,
                score.largestEdge, score.outside);
    std::fflush(stdout);
}

struct Case {
    std::string name;
    PixelSize picture;
    Quad quad;
    double radius = 0;
};

const PixelSize canvas{420, 520};

std::vector<Case> cases() {
    std::vector<Case> all{
        {"mild", {344, 420}, {{40, 50}, {390, 62}, {52, 480}, {380, 470}}, 0},
        {"mild, rounded", {344, 420}, {{40, 50}, {390, 62}, {52, 480}, {380, 470}}, 30},
        {"strong", {344, 420}, {{90, 40}, {340, 110}, {60, 490}, {330, 420}}, 0},
        {"axis-aligned", {344, 420}, {{30.3, 40.6}, {390.7, 40.6}, {30.3, 480.2}, {390.7, 480.2}}, 0},
        {"steeply foreshortened", {344, 420}, {{130, 150}, {290, 150}, {30, 330}, {390, 330}}, 0},
        {"steeply foreshortened, oblique", {344, 420}, {{60, 60}, {380, 230}, {40, 430}, {200, 440}}, 0}};
    for (int degrees = 15; degrees < 90; degrees += 15) {
        all.push_back(
            {"turned " + std::to_string(degrees), {258, 315}, turnedQuad({210.3, 260.2}, {260, 318}, degrees), 0});
    }
    for (const double shrink : {1.2, 1.5, 2.0, 2.5, 3.0, 3.5, 4.0, 7.0, 13.0}) {
        const Quad quad{{30, 40}, {330, 50}, {40, 420}, {322, 428}};
        char name[32];
        std::snprintf(name, sizeof name, "shrunk %.1f times", shrink);
        all.push_back({name, {static_cast<int>(300 * shrink), static_cast<int>(380 * shrink)}, quad, 0});
    }
    for (const double shrink : {2.0, 3.0, 4.0}) {
        for (const int degrees : {4, 15, 30, 45}) {
            char name[40];
            std::snprintf(name, sizeof name, "shrunk %.1f times, turned %d", shrink, degrees);
            all.push_back({name,
                           {static_cast<int>(258 * shrink), static_cast<int>(315 * shrink)},
                           turnedQuad({210.3, 260.2}, {260, 318}, degrees),
                           0});
        }
    }
    return all;
}

void judgeQuads(const char* content, const std::function<Bitmap(PixelSize)>& draw) {
    for (const Case& c : cases()) {
        const Bitmap picture = draw(c.picture);
        const Recording recording = recordingOf(canvas, fittedLayer(Image::fromBitmap(picture), c.quad, c.radius));
        const Judge judge(recording);
        const std::string name = std::string(content) + ": " + c.name;
        printScore(name, "quillomat", judge.scoreOf(rasterize(recording)));
#ifdef QUILLOMAT_WITH_PEERS
        if (c.radius == 0) {
            for (const KnownPeer& peer : knownPeers()) {
                printScore(name, peer.name, judge.scoreOf(peer.warp(picture, c.quad, canvas)));
            }
        }
#endif
    }
}

/// The screenshot of the benchmark's job, whose own pixels are two to four times as fine as that canvas's.
void judgeScenes(const char* content, const std::function<Bitmap(PixelSize)>& draw) {
    constexpr int side = 1080;
    const Image picture = Image::fromBitmap(draw({1290, 2796}));
    for (const Slant slant : {Slant::mild, Slant::strong}) {
        const Recording recording = recordingOf(PixelSize{side, side}, fittedLayer(picture, quadOf(slant, side), 0));
        const std::string name = slant == Slant::mild ? "mild at 1080" : "strong at 1080";
        printScore(content + (": " + name), "quillomat", Judge(recording).scoreOf(rasterize(recording)));
    }
}

void judgeStretches() {
    const auto stretched = [](const Image& picture, const Size& size) {
        BitmapContext context(size);
        context.drawImage(picture, makeRect(0, 0, size.width, size.height));
        return context.recording();
    };
    const auto judge = [&](const char* what, const Image& picture, const Size& size) {
        const Recording exact = stretched(Image::fromBitmap(picture.bitmap()), size);
        char name[64];
        std::snprintf(name, sizeof name, "%s to %.0f x %.0f", what, size.width, size.height);
        printScore(name, "quillomat", Judge(exact).scoreOf(rasterize(stretched(picture, size))));
    };
    const Bitmap bitmap = photographLike({400, 300});
    for (const Size size : {Size{300, 300}, Size{420, 520}, Size{108, 108}, Size{801, 150}}) {
        judge("stretched", Image::fromBitmap(bitmap), size);
    }
    // Stretched out of its planes.
    const Image photograph = imageFromBytes(testing::jpegOf(bitmap)).value();
    for (const Size size : {Size{266, 199}, Size{201, 152}, Size{144, 108}, Size{250, 103}}) {
        judge("planes stretched", photograph, size);
    }
}

} // namespace
} // namespace quillomat::benchmarks

int main() {
    using namespace quillomat;
    std::printf("%-34s %-10s %8s %8s %8s %8s\n", "picture: quad", "renderer", "inside", "edge", "edge", "outside");
    std::printf("%-34s %-10s %8s %8s %8s %8s\n", "", "", "dB", "dB", "largest", "pixels");
    const auto judge = [](const char* content, const std::function<Bitmap(PixelSize)>& draw) {
        benchmarks::judgeQuads(content, draw);
        benchmarks::judgeScenes(content, draw);
    };
    judge("small type", [](PixelSize size) { return screenshotLike(size); });
    judge("zone plate", [](PixelSize size) { return zonePlate(size); });
    judge("photograph", [](PixelSize size) { return photographLike(size); });
    benchmarks::judgeStretches();
}
