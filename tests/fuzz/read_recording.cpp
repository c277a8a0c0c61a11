// Any bytes are a recording or are refused in one line; one that is accepted can be written, read again, and drawn.
#include "platform/graphics/Rasterizer.h"
#include "platform/graphics/RecordingFile.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

using namespace quillomat;

namespace {

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ImageLimits limits;
    limits.pixels = 1 << 14;
    limits.side = 1024;
    const Result<Recording> recording = readRecordingFile(std::as_bytes(std::span(data, size)), limits);
    if (!recording) {
        require(!recording.reason().empty() && recording.reason().find('\n') == std::string::npos);
        return 0;
    }
    require(recording->size().area() <= limits.pixels);
    require(!describeRecording(*recording).empty());
    const Result<Bytes> written = writeRecordingFile(*recording);
    if (written) {
        const Result<Recording> again = readRecordingFile(*written, limits);
        require(static_cast<bool>(again));
        const Result<Bytes> twice = writeRecordingFile(*again);
        require(twice && *twice == *written);
    }
    if (recording->draws().size() <= 64) {
        require(rasterize(*recording, 1).size() == recording->size());
    }
    return 0;
}
