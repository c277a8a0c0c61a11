// Reading and writing pictures, beside libpng on the same pixels: times, sizes and ratios.
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/codecs/Codec.h"
#include "platform/graphics/codecs/ColorConversion.h"

#include <benchmark/benchmark.h>
#include <lcms2.h>
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace quillomat;

Bytes readSample(const std::string& name) {
    std::ifstream file(std::string(QUILLOMAT_SOURCE_DIR) + "/resources/samples/" + name, std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    const auto* begin = reinterpret_cast<const std::byte*>(text.data());
    return {begin, begin + text.size()};
}

Bitmap decoded(const std::string& name) {
    Result<Bitmap> bitmap = decodeImage(readSample(name));
    return bitmap ? std::move(bitmap).value() : Bitmap();
}

/// What a mockup looks like to a writer: a photograph as the background, here with a camera's noise, and a screenshot
/// over the middle.
Bitmap makeCanvas(int side, int noise) {
    const Bitmap background = decoded("background.jpg");
    const Bitmap screenshot = decoded("screenshot.png");
    std::mt19937 random(1);
    Bitmap canvas(PixelSize{side, side});
    const int left = side / 4;
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const bool isInside = x >= left && x < side - left;
            const Bitmap& from = isInside ? screenshot : background;
            const std::uint8_t* pixel =
                isInside
                    ? from.row(y % from.height()) + static_cast<std::ptrdiff_t>((x - left) % from.width()) * 4
                    : from.row(y * from.height() / side) + static_cast<std::ptrdiff_t>(x) * from.width() / side * 4;
            std::uint8_t* to = canvas.row(y) + static_cast<std::ptrdiff_t>(x) * 4;
            for (int c = 0; c < 3; ++c) {
                const int grain = isInside || noise == 0
                                      ? 0
                                      : static_cast<int>(random() % static_cast<unsigned>(2 * noise + 1)) - noise;
                to[c] = static_cast<std::uint8_t>(std::clamp(pixel[c] + grain, 0, 255));
            }
            to[3] = 255;
        }
    }
    return canvas;
}

const Bitmap& canvas(int side, int noise) {
    static std::map<std::pair<int, int>, Bitmap> made;
    const auto [at, isNew] = made.try_emplace({side, noise});
    if (isNew) {
        at->second = makeCanvas(side, noise);
    }
    return at->second;
}

Bytes writeByLibpng(const Bitmap& bitmap, int level) {
    Bytes out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_set_write_fn(
        png, &out,
        [](png_structp p, png_bytep data, std::size_t count) {
            auto* bytes = static_cast<Bytes*>(png_get_io_ptr(p));
            const auto* begin = reinterpret_cast<const std::byte*>(data);
            bytes->insert(bytes->end(), begin, begin + count);
        },
        nullptr);
    png_set_IHDR(png, info, static_cast<png_uint_32>(bitmap.width()), static_cast<png_uint_32>(bitmap.height()), 8,
                 PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, level);
    png_write_info(png, info);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < bitmap.height(); ++y) {
        png_write_row(png, bitmap.row(y));
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}

void report(benchmark::State& state, const Bitmap& bitmap, std::size_t fileBytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bitmap.bytes().size()));
    state.counters["file_MB"] = static_cast<double>(fileBytes) / 1e6;
}

void writeOwn(benchmark::State& state, int side, int noise, PngEffort effort, int threads) {
    const Bitmap& bitmap = canvas(side, noise);
    std::size_t size = 0;
    for (auto _ : state) {
        size = encodePng(bitmap, effort, threads)->size();
    }
    report(state, bitmap, size);
}

void writeLibpng(benchmark::State& state, int side, int noise, int level) {
    const Bitmap& bitmap = canvas(side, noise);
    std::size_t size = 0;
    for (auto _ : state) {
        size = writeByLibpng(bitmap, level).size();
    }
    report(state, bitmap, size);
}

void readFile(benchmark::State& state, const Bytes& file, bool byLibpng) {
    std::size_t bytes = 0;
    for (auto _ : state) {
        const Result<Bitmap> bitmap = byLibpng ? codecs::decodePngByLibpng(file) : decodeImage(file);
        bytes = bitmap ? bitmap->bytes().size() : 0;
        benchmark::DoNotOptimize(bytes);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void readReduced(benchmark::State& state, const Bytes& file, int side) {
    for (auto _ : state) {
        const Result<Bitmap> bitmap = decodeImageReduced(file, {side, side});
        benchmark::DoNotOptimize(bitmap ? bitmap->width() : 0);
    }
}

codecs::Chromaticities displayP3() {
    codecs::Chromaticities primaries;
    primaries.redX = 0.680;
    primaries.redY = 0.320;
    primaries.greenX = 0.265;
    primaries.greenY = 0.690;
    return primaries;
}

void convertOwn(benchmark::State& state, const Bitmap& bitmap) {
    const auto conversion = codecs::ColorConversion::fromPrimaries(std::nullopt, displayP3(), codecs::ColorModel::rgb);
    Bitmap pixels = bitmap;
    for (auto _ : state) {
        conversion.convert(pixels.bytes().data(), pixels.size().area());
    }
}

void convertByLcms(benchmark::State& state, const Bitmap& bitmap) {
    const codecs::Chromaticities p = displayP3();
    const cmsCIExyY white{p.whiteX, p.whiteY, 1};
    const cmsCIExyYTRIPLE primaries{{p.redX, p.redY, 1}, {p.greenX, p.greenY, 1}, {p.blueX, p.blueY, 1}};
    const double parameters[]{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    cmsToneCurve* curve = cmsBuildParametricToneCurve(nullptr, 4, parameters);
    cmsToneCurve* const curves[]{curve, curve, curve};
    cmsHPROFILE from = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM transform = cmsCreateTransform(from, TYPE_RGBA_8, srgb, TYPE_RGBA_8, INTENT_PERCEPTUAL,
                                                 cmsFLAGS_NOCACHE | cmsFLAGS_COPY_ALPHA);
    Bitmap pixels = bitmap;
    for (auto _ : state) {
        cmsDoTransform(transform, pixels.bytes().data(), pixels.bytes().data(),
                       static_cast<cmsUInt32Number>(pixels.size().area()));
    }
    cmsDeleteTransform(transform);
    cmsCloseProfile(srgb);
    cmsCloseProfile(from);
    cmsFreeToneCurve(curve);
}

/// Keeps what was measured, for the ratios.
class KeepingReporter final : public benchmark::ConsoleReporter {
public:
    struct Measured {
        double milliseconds = 0;
        double fileMegabytes = 0;
    };

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const auto size = run.counters.find("file_MB");
            measured[run.run_name.function_name] = {run.GetAdjustedRealTime(),
                                                    size == run.counters.end() ? 0 : size->second.value};
        }
    }

    std::map<std::string, Measured> measured;
};

void printRatio(const KeepingReporter& reporter, const std::string& own, const std::string& peer) {
    const auto a = reporter.measured.find(own);
    const auto b = reporter.measured.find(peer);
    if (a == reporter.measured.end() || b == reporter.measured.end()) {
        return;
    }
    std::printf("%-34s %8.1f times as fast as %-24s", own.c_str(), b->second.milliseconds / a->second.milliseconds,
                peer.c_str());
    if (b->second.fileMegabytes > 0) {
        std::printf(" file %.3f of its size", a->second.fileMegabytes / b->second.fileMegabytes);
    }
    std::printf("\n");
}

std::string caseName(int side, int noise) {
    return std::to_string(side) + (noise > 0 ? "-grainy" : "-smooth");
}

template <typename... Arguments>
void add(const std::string& name, void (*body)(benchmark::State&, Arguments...), const Arguments&... arguments) {
    benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) { body(state, arguments...); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void addWriters(int side, int noise) {
    const std::string name = caseName(side, noise);
    add("write/fast/2/" + name, writeOwn, side, noise, PngEffort::fast, 2);
    add("write/fast/1/" + name, writeOwn, side, noise, PngEffort::fast, 1);
    add("write/libpng1/" + name, writeLibpng, side, noise, 1);
    if (side <= 3000) {
        add("write/libpng6/" + name, writeLibpng, side, noise, 6);
        add("write/best/2/" + name, writeOwn, side, noise, PngEffort::best, 2);
        add("write/libpng9/" + name, writeLibpng, side, noise, 9);
    }
}

void addReader(const std::string& name, const Bytes& file) {
    benchmark::RegisterBenchmark(("read/own/" + name).c_str(), [&file](benchmark::State& state) {
        readFile(state, file, false);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(("read/libpng/" + name).c_str(), [&file](benchmark::State& state) {
        readFile(state, file, true);
    })->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    for (const int side : {1080, 3000, 6000}) {
        for (const int noise : {0, 3}) {
            addWriters(side, noise);
        }
    }
    const Bytes screenshot = readSample("screenshot.png");
    const Bytes grainy = writeByLibpng(canvas(3000, 3), 6);
    const Bytes background = readSample("background.jpg");
    addReader("screenshot", screenshot);
    addReader("3000-grainy", grainy);
    benchmark::RegisterBenchmark("read/jpeg/whole", [&](benchmark::State& state) {
        readFile(state, background, false);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("read/jpeg/at-least-540", [&](benchmark::State& state) {
        readReduced(state, background, 540);
    })->Unit(benchmark::kMillisecond);

    const Bitmap flat = decoded("screenshot.png");
    const Bitmap grain = canvas(3000, 3);
    benchmark::RegisterBenchmark("display-p3/own/screenshot", [&](benchmark::State& state) {
        convertOwn(state, flat);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("display-p3/lcms2/screenshot", [&](benchmark::State& state) {
        convertByLcms(state, flat);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("display-p3/own/3000-grainy", [&](benchmark::State& state) {
        convertOwn(state, grain);
    })->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("display-p3/lcms2/3000-grainy", [&](benchmark::State& state) {
        convertByLcms(state, grain);
    })->Unit(benchmark::kMillisecond);

    KeepingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\nRatios (more is better; file sizes: less is better)\n");
    for (const int side : {1080, 3000, 6000}) {
        for (const int noise : {0, 3}) {
            const std::string ending = caseName(side, noise);
            printRatio(reporter, "write/fast/2/" + ending, "write/libpng1/" + ending);
            printRatio(reporter, "write/fast/1/" + ending, "write/libpng1/" + ending);
            printRatio(reporter, "write/best/2/" + ending, "write/libpng9/" + ending);
        }
    }
    for (const char* name : {"screenshot", "3000-grainy"}) {
        printRatio(reporter, std::string("read/own/") + name, std::string("read/libpng/") + name);
        printRatio(reporter, std::string("display-p3/own/") + name, std::string("display-p3/lcms2/") + name);
    }
    return 0;
}
