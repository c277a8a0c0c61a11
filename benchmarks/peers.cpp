#include "Peers.h"

namespace quillomat::benchmarks {

const std::vector<KnownPeer>& knownPeers() {
    static const std::vector<KnownPeer> peers{{"qt", "Qt", makeQtPeer, warpWithQt},
                                              {"opencv", "OpenCV", makeOpenCvPeer, warpWithOpenCv},
                                              {"vips", "libvips", makeVipsPeer, warpWithVips},
                                              {"magick", "ImageMagick", makeMagickPeer, warpWithMagick}};
    return peers;
}

} // namespace quillomat::benchmarks
