// Writes the scene that renderers are compared on as files, for timing whole commands: usage: benchmark_scene FOLDER
// SIDE makes background.jpg, screenshot.png, and frame.png and glare.png of SIDE x SIDE pixels.
#include "Scene.h"
#include "platform/graphics/PngWriter.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

using namespace quillomat;
using namespace quillomat::benchmarks;

namespace {

void write(const Bytes& document, const std::string& path) {
    if (!SystemFileManager().write(path, document)) {
        throw std::runtime_error("cannot write " + path);
    }
}

void writePng(const Bitmap& bitmap, const std::string& path) {
    const Result<Bytes> document = encodePng(bitmap);
    if (!document) {
        throw std::runtime_error("cannot encode " + path);
    }
    write(*document, path);
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
        write(*scene.photograph.source()->document(), folder + "/background.jpg");
        writePng(*scene.screenshot, folder + "/screenshot.png");
        writePng(*scene.frame, folder + "/frame.png");
        writePng(*scene.glare, folder + "/glare.png");
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
