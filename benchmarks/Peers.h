// The same job done by other renderers, for comparison: each in the .cpp that wraps it.
#pragma once

#include "Scene.h"

#include <memory>
#include <vector>

namespace quillomat::benchmarks {

/// A renderer that keeps its own copies of the inputs and reuses its canvas.
class Peer {
public:
    virtual ~Peer() = default;
    virtual void compose(int threads) = 0;
    /// Premultiplied RGBA of the last composition.
    [[nodiscard]] virtual Bitmap result() const = 0;
};

[[nodiscard]] std::unique_ptr<Peer> makeQtPeer(const Scene& scene);
[[nodiscard]] std::unique_ptr<Peer> makeOpenCvPeer(const Scene& scene);
[[nodiscard]] std::unique_ptr<Peer> makeVipsPeer(const Scene& scene);
[[nodiscard]] std::unique_ptr<Peer> makeMagickPeer(const Scene& scene);

/// Only the screenshot in its quad, on a clear canvas: what quality is judged on.
[[nodiscard]] Bitmap warpWithQt(const Bitmap& picture, const Quad& quad, PixelSize canvas);
[[nodiscard]] Bitmap warpWithOpenCv(const Bitmap& picture, const Quad& quad, PixelSize canvas);
[[nodiscard]] Bitmap warpWithVips(const Bitmap& picture, const Quad& quad, PixelSize canvas);
[[nodiscard]] Bitmap warpWithMagick(const Bitmap& picture, const Quad& quad, PixelSize canvas);

struct KnownPeer {
    const char* name;
    const char* title;
    std::unique_ptr<Peer> (*make)(const Scene& scene);
    Bitmap (*warp)(const Bitmap& picture, const Quad& quad, PixelSize canvas);
};
[[nodiscard]] const std::vector<KnownPeer>& knownPeers();

} // namespace quillomat::benchmarks
