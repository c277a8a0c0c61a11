// Prints how alike two pictures are: usage: benchmark_difference A B. 0 where sizes differ.
#include "Likeness.h"
#include "platform/graphics/ImageFile.h"

#include <cstdio>
#include <cstdlib>

int main(int count, char** arguments) {
    using namespace quillomat;
    if (count != 3) {
        std::fprintf(stderr, "usage: %s A B\n", arguments[0]);
        return EXIT_FAILURE;
    }
    const SystemFileManager files;
    const Result<Image> images[2] = {imageFromFile(files, arguments[1]), imageFromFile(files, arguments[2])};
    const SharedBitmap a = images[0] ? images[0]->bitmap() : nullptr;
    const SharedBitmap b = images[1] ? images[1]->bitmap() : nullptr;
    if (!a || !b || a->size() != b->size()) {
        std::printf("0\n");
        return EXIT_SUCCESS;
    }
    std::printf("%.2f\n", benchmarks::likeness(*a, *b));
    return EXIT_SUCCESS;
}
