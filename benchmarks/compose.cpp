// How long composing takes, by canvas, slant and threads, beside the peers. Decoding and encoding are not in it, and
// every renderer writes into a canvas that it reuses.
#include "Likeness.h"
#include "Scene.h"
#include "platform/graphics/Rasterizer.h"
#ifdef QUILLOMAT_WITH_PEERS
#include "Peers.h"
#endif

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>
#include <tuple>

namespace quillomat::benchmarks {
namespace {

const Scene& sceneOf(int side, Slant slant) {
    static std::map<std::pair<int, Slant>, Scene> scenes;
    const auto [at, isNew] = scenes.try_emplace({side, slant});
    if (isNew) {
        at->second = makeScene(side, slant);
    }
    return at->second;
}

void composeHere(benchmark::State& state, Slant slant) {
    const auto side = static_cast<int>(state.range(0));
    const Recording recording = recordingOfScene(sceneOf(side, slant));
    Bitmap canvas(recording.size());
    rasterizeOnto(canvas, recording, 1); // touches the canvas's pages
    for (auto _ : state) {
        rasterizeOnto(canvas, recording, static_cast<int>(state.range(1)));
        benchmark::DoNotOptimize(canvas.bytes().data());
    }
}

/// One layer alone: where the time goes.
void drawLayerAlone(benchmark::State& state, Slant slant, std::size_t layer) {
    const Recording all = recordingOfScene(sceneOf(static_cast<int>(state.range(0)), slant));
    const Recording recording = recordingOf(all.size(), all.draws()[layer]);
    Bitmap canvas(recording.size());
    rasterizeOnto(canvas, recording, 1); // as above
    for (auto _ : state) {
        rasterizeOnto(canvas, recording, 1);
        benchmark::DoNotOptimize(canvas.bytes().data());
    }
}

#ifdef QUILLOMAT_WITH_PEERS
/// Whether the peer draws this scene at all: looked at once for each scene, before any time is believed.
bool drawsTheScene(const KnownPeer& peer, Peer& made, const Scene& scene, Slant slant) {
    static std::map<std::tuple<const char*, int, Slant>, bool> known;
    const auto [at, isNew] = known.try_emplace({peer.name, scene.side, slant});
    if (isNew) {
        made.compose(2);
        at->second = likeness(made.result(), rasterize(recordingOfScene(scene))) > 25;
    }
    return at->second;
}

void composeThere(benchmark::State& state, Slant slant, const KnownPeer& peer) {
    const Scene& scene = sceneOf(static_cast<int>(state.range(0)), slant);
    const auto made = peer.make(scene);
    if (!drawsTheScene(peer, *made, scene, slant)) {
        state.SkipWithError("it draws another picture");
        return;
    }
    for (auto _ : state) {
        made->compose(static_cast<int>(state.range(1)));
    }
}
#endif

void registerAll() {
    const std::pair<const char*, Slant> slants[] = {{"mild", Slant::mild}, {"strong", Slant::strong}};
    const auto sized = [](benchmark::internal::Benchmark* made) {
        made->ArgsProduct({{1080, 3000, 6000}, {1, 2}})->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime();
    };
    for (const auto& [name, slant] : slants) {
        const std::string after = std::string("/") + name;
        const Slant which = slant;
        sized(benchmark::RegisterBenchmark(("quillomat" + after).c_str(),
                                           [which](benchmark::State& state) { composeHere(state, which); }));
#ifdef QUILLOMAT_WITH_PEERS
        for (const KnownPeer& peer : knownPeers()) {
            sized(benchmark::RegisterBenchmark((peer.name + after).c_str(), [which, &peer](benchmark::State& state) {
                composeThere(state, which, peer);
            }));
        }
#endif
    }
    const char* layers[] = {"background", "screenshot", "frame", "glare"};
    for (const auto& [name, slant] : slants) {
        for (std::size_t i = 0; i < 4; ++i) {
            const bool standsAlone = i != 1 && slant == Slant::strong; // looks the same on every quad
            if (!standsAlone) {
                const Slant which = slant;
                benchmark::RegisterBenchmark((std::string("layer/") + layers[i] + "/" + name).c_str(),
                                             [i, which](benchmark::State& state) { drawLayerAlone(state, which, i); })
                    ->ArgsProduct({{1080, 3000, 6000}})
                    ->Unit(benchmark::kMillisecond)
                    ->MeasureProcessCPUTime();
            }
        }
    }
}

} // namespace
} // namespace quillomat::benchmarks

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    quillomat::benchmarks::registerAll();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
