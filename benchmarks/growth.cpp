// How times grow with the canvas, the screenshot and the threads, here and with the fastest peers, as lines of
// "renderer, what grows, value, milliseconds": the best of several turns that they take.
#include "Peers.h"
#include "platform/graphics/Rasterizer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace quillomat::benchmarks {
namespace {

double millisecondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

Scene sceneWith(int side, int screenshotWidth) {
    Scene scene = makeScene(side, Slant::mild);
    if (screenshotWidth != 1290) {
        scene.screenshot =
            std::make_shared<const Bitmap>(screenshotLike({screenshotWidth, screenshotWidth * 2796 / 1290}));
    }
    return scene;
}

void measure(const char* what, int value, const Scene& scene, int threads) {
    std::vector<std::pair<std::string, std::function<void()>>> renderers;
    const Recording recording = recordingOfScene(scene);
    Bitmap canvas(recording.size());
    renderers.emplace_back("quillomat", [&] { rasterizeOnto(canvas, recording, threads); });
    std::vector<std::unique_ptr<Peer>> peers;
    for (const KnownPeer& peer : knownPeers()) {
        if (std::strcmp(peer.name, "qt") == 0 || std::strcmp(peer.name, "opencv") == 0) {
            peers.push_back(peer.make(scene));
            renderers.emplace_back(peer.name, [made = peers.back().get(), threads] { made->compose(threads); });
        }
    }
    std::vector<double> best(renderers.size(), 1e9);
    for (int turn = 0; turn < 5; ++turn) {
        for (std::size_t i = 0; i < renderers.size(); ++i) {
            best[i] = std::min(best[i], millisecondsOf(renderers[i].second));
        }
    }
    for (std::size_t i = 0; i < renderers.size(); ++i) {
        std::printf("%s\t%s\t%d\t%.2f\n", renderers[i].first.c_str(), what, value, best[i]);
        std::fflush(stdout);
    }
}

} // namespace
} // namespace quillomat::benchmarks

int main() {
    using namespace quillomat::benchmarks;
    for (const int side : {540, 1080, 2000, 3000, 4500, 6000}) {
        measure("canvas", side, sceneWith(side, 1290), 1);
    }
    for (const int width : {320, 640, 1290, 2580, 3870}) {
        measure("screenshot", width, sceneWith(3000, width), 1);
    }
    const int cores = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    for (int threads = 1; threads <= cores; threads *= 2) {
        measure("threads", threads, sceneWith(3000, 1290), threads);
    }
}
