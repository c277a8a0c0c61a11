// A render has three stages, and its peak is the dearest of them: the background is blurred; pictures are decoded and
// stay; rows are drawn and written, and the document grows. What is true of each is said at its constant.
#include "cli/RenderMemory.h"

#include <algorithm>

namespace quillomat {

namespace {

constexpr std::uint64_t bytesPerPixel = 4;
constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;

// Libraries, catalogue, filter tables, and what the allocator keeps: 17 MiB when hardly anything is drawn.
constexpr std::uint64_t programBytes = 22 * mebibyte;
// Bands under way, their filters and their compressor. The smallest file tries bands of a megabyte with compressors
// that look far back: 13 MiB a thread.
constexpr std::uint64_t writerBytes = 2 * mebibyte;
constexpr std::uint64_t smallestFileWriterBytes = 14 * mebibyte;
// Rows of a band that a writer holds at least, four times over: as drawn, straight, filtered and deflated.
constexpr std::uint64_t rowsOfWriter = std::uint64_t{16} * 4;
// An overlay in runs: the runs of the catalogue's frames take 6 to 17 bytes for each byte of their documents, those of
// glares a byte for each pixel that is light.
constexpr std::uint64_t runBytesPerDocumentByte = 18;
constexpr std::uint64_t runBytesPerRow = 96;
constexpr std::uint64_t runPieceBytes = 2 * mebibyte;
// A side that is shrunk more than this many times is halved beforehand, and the halves together are as large as the
// whole. The rasteriser begins at 8 or more; a screen in perspective is shrunk more at its far edge.
constexpr int shrunkWithoutHalving = 6;
// A background that is decoded as it is drawn: what lies ahead, and what each thread's band looks at.
constexpr std::uint64_t rowsAheadBytes = 6 * mebibyte;
constexpr std::uint64_t rowsOfBandBytes = 3 * mebibyte;
constexpr std::uint64_t rowsOfSmallestFileBandBytes = 9 * mebibyte;
// Where its planes are stretched, rows of those under way: as many as a canvas row may take, and those decoded
// together.
constexpr std::uint64_t rowsOfPlanes = 48;
constexpr std::uint64_t bytesPerSampleOfPlanes = 3;
// A picture that is decoded at half its size, or half of that, keeps twice the drawn pixels.
constexpr int pixelsLeftByHalving = 2;
constexpr int smallestPart = 8;
// What is blurred is smooth: photographs and noise alike take less than a twentieth.
constexpr std::uint64_t deflatedByBlur = 4;
// A recording's documents are gathered and then joined; both grow by doubling.
constexpr std::uint64_t documentCopiesOfRecording = 4;

std::uint64_t pixelBytes(PixelSize size) {
    return size.area() * bytesPerPixel;
}

bool isShrunkFar(PixelSize picture, PixelSize drawn) {
    return picture.width / shrunkWithoutHalving > drawn.width || picture.height / shrunkWithoutHalving > drawn.height;
}

/// A picture's pixels, and their halves where it is drawn much smaller.
std::uint64_t drawnBytes(PixelSize picture, PixelSize drawn) {
    return pixelBytes(picture) * (isShrunkFar(picture, drawn) ? 2 : 1);
}

bool isInRuns(const RenderPlan::Overlay& overlay) {
    return overlay.drawn == overlay.picture.header.size && overlay.picture.header.mayBeInRuns;
}

std::uint64_t runBytes(const RenderPlan::Picture& picture) {
    return runPieceBytes + static_cast<std::uint64_t>(picture.header.size.height) * runBytesPerRow +
           picture.documentBytes * runBytesPerDocumentByte;
}

std::uint64_t overlayBytes(const RenderPlan::Overlay& overlay) {
    const std::uint64_t whole = drawnBytes(overlay.picture.header.size, overlay.drawn);
    return isInRuns(overlay) ? std::min(whole, runBytes(overlay.picture)) : whole;
}

/// What an overlay may take of the saved file: its runs will deflate, but an enlarged one has more of them.
std::uint64_t savedBytes(const RenderPlan::Overlay& overlay) {
    const std::uint64_t pixels = std::max<std::uint64_t>(overlay.picture.header.size.area(), 1);
    const std::uint64_t enlargement = (overlay.drawn.area() + pixels - 1) / pixels;
    return std::min(pixelBytes(overlay.drawn), runBytes(overlay.picture) * std::max<std::uint64_t>(enlargement, 1));
}

/// As `ImageHeader::isHalvedWhileDecoding` says.
PixelSize decodedSize(const RenderPlan::Background& background) {
    PixelRect part = background.cut;
    const auto canBeHalved = [&] {
        return (part.x | part.y | part.width | part.height) % 2 == 0 &&
               part.width / 2 >= background.drawn.width * pixelsLeftByHalving &&
               part.height / 2 >= background.drawn.height * pixelsLeftByHalving;
    };
    for (int size = 1; size < smallestPart && background.picture.header.isHalvedWhileDecoding && canBeHalved();
         size *= 2) {
        part = {part.x / 2, part.y / 2, part.width / 2, part.height / 2};
    }
    return {part.width, part.height};
}

std::uint64_t backgroundBytes(const RenderPlan::Background& background) {
    return drawnBytes(decodedSize(background), background.drawn);
}

std::uint64_t threadsOf(const RenderPlan& plan) {
    return static_cast<std::uint64_t>(std::max(plan.threads, 1));
}

/// Not where it has to be halved beforehand.
bool isInRows(const RenderPlan::Background& background) {
    return background.picture.header.mayBeInRows && !isShrunkFar(decodedSize(background), background.drawn);
}

/// For a background that is drawn as it is.
std::uint64_t keptBytes(const RenderPlan& plan) {
    const std::uint64_t whole = backgroundBytes(*plan.background);
    const std::uint64_t band = plan.smallestFile ? rowsOfSmallestFileBandBytes : rowsOfBandBytes;
    const std::uint64_t rows = rowsAheadBytes + band * threadsOf(plan);
    const ImageHeader& header = plan.background->picture.header;
    const std::uint64_t planes =
        header.mayBeInPlanes ? static_cast<std::uint64_t>(header.size.width) * rowsOfPlanes * bytesPerSampleOfPlanes
                             : 0;
    return isInRows(*plan.background) ? std::min(whole, rows) + planes : whole;
}

bool hidesCanvas(const RenderPlan& plan) {
    return plan.background && plan.background->picture.header.isKnownOpaque;
}

/// The rows of a file in which nothing but a blurred background deflates; what nothing is drawn on takes no room.
std::uint64_t savedBytes(const RenderPlan& plan) {
    const std::uint64_t whole = plan.canvas.area() * (hidesCanvas(plan) ? 3 : bytesPerPixel);
    std::uint64_t drawn = 0;
    if (plan.background) {
        drawn += plan.background->isBlurred ? whole / deflatedByBlur : whole;
    }
    for (const RenderPlan::Screen& screen : plan.screens) {
        drawn += pixelBytes(screen.box);
    }
    for (const RenderPlan::Overlay& overlay : plan.overlays) {
        drawn += savedBytes(overlay);
    }
    return std::min(whole, drawn);
}

std::uint64_t documentBytes(const RenderPlan& plan) {
    std::uint64_t sum = plan.background ? plan.background->picture.documentBytes : 0;
    for (const RenderPlan::Screen& screen : plan.screens) {
        sum += screen.screenshot.documentBytes;
    }
    for (const RenderPlan::Overlay& overlay : plan.overlays) {
        sum += overlay.picture.documentBytes;
    }
    return sum;
}

/// A background that keeps its whole size is not decoded as a part.
std::uint64_t decodingBytes(const RenderPlan::Background& background) {
    const ImageHeader& header = background.picture.header;
    const bool isWhole = PixelSize{background.cut.width, background.cut.height} == header.size;
    return isWhole ? header.decoding.whole : header.decoding.part;
}

/// Before anything else is decoded, and gone when that begins.
std::uint64_t blurringBytes(const RenderPlan& plan) {
    if (!plan.background || !plan.background->isBlurred) {
        return 0;
    }
    return backgroundBytes(*plan.background) + decodingBytes(*plan.background);
}

struct Decoded {
    std::uint64_t kept = 0;
    std::uint64_t passing = 0;
};

/// All pictures may be under way at once.
Decoded decodedBytes(const RenderPlan& plan) {
    Decoded sum;
    for (const RenderPlan::Screen& screen : plan.screens) {
        sum.kept += drawnBytes(screen.screenshot.header.size, screen.box);
        sum.passing += screen.screenshot.header.decoding.whole;
    }
    for (const RenderPlan::Overlay& overlay : plan.overlays) {
        sum.kept += overlayBytes(overlay);
        sum.passing += isInRuns(overlay) ? 0 : overlay.picture.header.decoding.whole;
    }
    if (plan.background && !plan.background->isBlurred) {
        // In rows it is being decoded until the last of them is drawn.
        sum.kept += keptBytes(plan);
        (isInRows(*plan.background) ? sum.kept : sum.passing) += decodingBytes(*plan.background);
    }
    return sum;
}

std::uint64_t writingBytes(const RenderPlan& plan) {
    const auto width = static_cast<std::uint64_t>(std::max(plan.canvas.width, 0));
    const std::uint64_t writer =
        (plan.smallestFile ? smallestFileWriterBytes : writerBytes) + width * bytesPerPixel * rowsOfWriter;
    const std::uint64_t recorded = plan.keepsRecording ? documentBytes(plan) * documentCopiesOfRecording : 0;
    return savedBytes(plan) + writer * threadsOf(plan) + recorded;
}

} // namespace

std::uint64_t mostBytesOfRender(const RenderPlan& plan) {
    const Decoded decoded = decodedBytes(plan);
    const std::uint64_t composing =
        decoded.kept + pixelBytes(plan.intermediate) + std::max(decoded.passing, writingBytes(plan));
    return programBytes + documentBytes(plan) + std::max(blurringBytes(plan), composing);
}

} // namespace quillomat
