// One peer's whole job: usage: benchmark_whole_PEER FOLDER SIDE THREADS OUTPUT, with the files of benchmark_scene.
#include "WholeJob.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>

#include <png.h>

namespace quillomat::benchmarks {

void writeByLibpng(const std::string& path, const unsigned char* pixels, int side, std::size_t stride) {
    const auto close = [](std::FILE* file) { static_cast<void>(std::fclose(file)); };
    const std::unique_ptr<std::FILE, decltype(close)> file(std::fopen(path.c_str(), "wb"), close);
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    png_init_io(png, file.get());
    const auto length = static_cast<png_uint_32>(side);
    png_set_IHDR(png, info, length, length, 8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(png, 1);
    png_write_info(png, info);
    png_set_bgr(png);
    png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (int y = 0; y < side; ++y) {
        png_write_row(png, pixels + static_cast<std::size_t>(y) * stride);
    }
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
}

} // namespace quillomat::benchmarks

int main(int count, char** arguments) {
    using namespace quillomat;
    if (count != 5) {
        std::fprintf(stderr, "usage: %s FOLDER SIDE THREADS OUTPUT\n", arguments[0]);
        return EXIT_FAILURE;
    }
    const int side = std::atoi(arguments[2]);
    const auto at = [side](double x, double y) {
        return Point{std::round(x * side / 3000), std::round(y * side / 3000)};
    };
    const benchmarks::WholeJob job{arguments[1],
                                   side,
                                   std::atoi(arguments[3]),
                                   arguments[4],
                                   {at(840, 240), at(2150, 270), at(850, 2750), at(2160, 2720)}};
    try {
        benchmarks::doWholeJob(job);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
