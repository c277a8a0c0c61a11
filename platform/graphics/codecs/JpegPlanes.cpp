#include "platform/graphics/codecs/JpegPlanes.h"

#include <array>
#include <optional>
#include <utility>

namespace quillomat::codecs {
namespace {

// The library repeats chroma in narrower planes, and in those reduced to an eighth, instead of running it straight.
constexpr JDIMENSION narrowestChroma = 3;
constexpr int samplesOfBlockAtAnEighth = 1;

/// How many samples of the luma stand for one of the chroma, one way.
std::optional<int> lumaToOne(int luma, int chroma) {
    return luma == chroma ? std::optional(1) : luma == 2 * chroma ? std::optional(2) : std::nullopt;
}

class JpegPlaneReader final : public PlaneReader {
public:
    explicit JpegPlaneReader(SharedDocument document) : document_(std::move(document)) {}

    [[nodiscard]] bool open(const PixelRect& part, PixelSize minimum, const ImageLimits& limits) {
        if (!jpeg::open(reader_, *document_, limits) || !isStoredInPlanes(reader_) ||
            !jpeg::conversionOf(reader_).isIdentity()) {
            return false;
        }
        const jpeg::Reduction reduction = jpeg::reductionFor(jpeg::storedSize(reader_), part, minimum);
        jpeg_decompress_struct& info = reader_.info;
        info.raw_data_out = TRUE;
        info.out_color_space = JCS_YCbCr;
        info.scale_num = reduction.eighths;
        info.scale_denom = 8;
        return jpeg::findSizes(&reader_) && lay(reduction.part);
    }

    [[nodiscard]] const PlanarLayout& layout() const override { return layout_; }

    [[nodiscard]] bool read(const PlaneStrip& strip) override {
        std::array<JSAMPARRAY, planeCount> planes{};
        for (std::size_t plane = 0; plane < planeCount; ++plane) {
            planes[plane] = const_cast<JSAMPARRAY>(strip[plane].data()); // NOLINT: the library leaves the places alone
        }
        return start() && jpeg::readPlanes(&reader_, planes.data(), static_cast<JDIMENSION>(layout_.rowsTogether));
    }

    [[nodiscard]] bool finish() override {
        if (!start()) {
            return false;
        }
        PlanarPicture passed(layout_);
        while (reader_.info.output_scanline < reader_.info.output_height) {
            if (!passed.append(*this)) {
                return false;
            }
            passed.dropBefore(passed.end());
        }
        return jpeg::finishDecoding(&reader_);
    }

private:
    /// When the first rows are wanted: pictures of several scans are then read to their end.
    [[nodiscard]] bool start() {
        isStarted_ = isStarted_ || jpeg::startDecoding(&reader_);
        return isStarted_;
    }

    /// Reductions leave chroma larger where it can be: its size beside the luma's is known only now.
    [[nodiscard]] bool lay(const PixelRect& part) {
        const jpeg_decompress_struct& info = reader_.info;
        const jpeg_component_info& luma = info.comp_info[0];
        const jpeg_component_info& chroma = info.comp_info[1];
        const auto across =
            lumaToOne(luma.h_samp_factor * luma.DCT_scaled_size, chroma.h_samp_factor * chroma.DCT_scaled_size);
        const auto down =
            lumaToOne(luma.v_samp_factor * luma.DCT_scaled_size, chroma.v_samp_factor * chroma.DCT_scaled_size);
        if (!across || !down) {
            return false;
        }
        const auto room = [](const jpeg_component_info& component) {
            return static_cast<int>(component.width_in_blocks) * component.DCT_scaled_size;
        };
        layout_ = {{static_cast<int>(info.output_width), static_cast<int>(info.output_height)},
                   part,
                   *across,
                   *down,
                   luma.v_samp_factor * luma.DCT_scaled_size,
                   room(luma),
                   room(chroma)};
        return (*across == 1 && *down == 1) ||
               (chroma.downsampled_width >= narrowestChroma && info.min_DCT_scaled_size > samplesOfBlockAtAnEighth);
    }

    SharedDocument document_;
    jpeg::Reader reader_;
    PlanarLayout layout_;
    bool isStarted_ = false;
};

} // namespace

bool isStoredInPlanes(const jpeg::Reader& reader) {
    const jpeg_decompress_struct& info = reader.info;
    if (info.jpeg_color_space != JCS_YCbCr || info.num_components != static_cast<int>(planeCount)) {
        return false;
    }
    const auto isSampled = [&](int component, int across, int down) {
        return info.comp_info[component].h_samp_factor == across && info.comp_info[component].v_samp_factor == down;
    };
    const bool isKnown = isSampled(0, 1, 1) || isSampled(0, 2, 1) || isSampled(0, 2, 2);
    return isKnown && isSampled(1, 1, 1) && isSampled(2, 1, 1) && jpeg::orientationOf(reader) == Orientation::upright;
}

std::unique_ptr<PlaneReader> readJpegPlanes(SharedDocument document, const PixelRect& part, PixelSize minimum,
                                            const ImageLimits& limits) {
    auto reader = std::make_unique<JpegPlaneReader>(std::move(document));
    return reader->open(part, minimum, limits) ? std::move(reader) : nullptr;
}

} // namespace quillomat::codecs
