// Writes the scene that renderers are compared on as files, for timing whole commands: usage: benchmark_scene FOLDER
// SIDE makes background.jpg, screenshot.png, and frame.png and glare.png of SIDE x SIDE pixels.
#include "Scene.h"
#include "platform/graphics/PngWriter.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
// After <cstdio>, which it needs and does not include.
#include <jpeglib.h>

#include <iostream>
#include <memory>
#include <string>

using namespace quillomat;
using namespace quillomat::benchmarks;

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }
};

void writeJpeg(const Bitmap& bitmap, const std::string& path) {
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        throw std::runtime_error("cannot write " + path);
    }
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_stdio_dest(&info, file.get());
    info.image_width = static_cast<JDIMENSION>(bitmap.width());
    info.image_height = static_cast<JDIMENSION>(bitmap.height());
    info.input_components = 4;
    info.in_color_space = JCS_EXT_RGBX;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, 90, TRUE);
    jpeg_start_compress(&info, TRUE);
    for (int y = 0; y < bitmap.height(); ++y) {
        JSAMPROW row = const_cast<JSAMPROW>(bitmap.row(y)); // NOLINT: the library only reads it
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
}

void writePng(const Bitmap& bitmap, const std::string& path) {
    const Result<Bytes> document = encodePng(bitmap);
    if (!document || !SystemFileManager().write(path, *document)) {
        throw std::runtime_error("cannot write " + path);
    }
}

} // namespace

int main(int count, char** arguments) {
    const int side = count == 3 ? std::atoi(arguments[2]) : 0;
    if (side < 100 || side > 30000) {
        std::cerr << "usage: benchmark_scene FOLDER SIDE\n";
        return EXIT_FAILURE;
    }
    try {
        const std::string folder = arguments[1];
        std::filesystem::create_directories(folder);
        const Scene scene = makeScene(side, Slant::mild);
        writeJpeg(*scene.background, folder + "/background.jpg");
        writePng(*scene.screenshot, folder + "/screenshot.png");
        writePng(*scene.frame, folder + "/frame.png");
        writePng(*scene.glare, folder + "/glare.png");
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
