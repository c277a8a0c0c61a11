#include "VipsPeer.h"
#include "WholeJob.h"

#include <algorithm>

namespace quillomat::benchmarks {

namespace {

using namespace vips;

Picture load(const WholeJob& job, const char* name) {
    return made([&](VipsImage** out) {
        *out = vips_image_new_from_file(job.path(name).c_str(), "access", VIPS_ACCESS_SEQUENTIAL, nullptr);
        return *out == nullptr ? 1 : 0;
    });
}

Picture loadWithAlpha(const WholeJob& job, const char* name) {
    const Picture image = load(job, name);
    const Picture whole = made([&](VipsImage** out) {
        *out = vips_image_copy_memory(image.get()); // its pixels are asked for out of order
        return *out == nullptr ? 1 : 0;
    });
    if (vips_image_hasalpha(whole.get()) != FALSE) {
        return made([&](VipsImage** out) { return vips_copy(whole.get(), out, nullptr); });
    }
    return made([&](VipsImage** out) { return vips_addalpha(whole.get(), out, nullptr); });
}

} // namespace

void doWholeJob(const WholeJob& job) {
    check(VIPS_INIT("benchmark"));
    vips_concurrency_set(job.threads);
    const Picture background = load(job, "background.jpg");
    const int cut = std::min(background->Xsize, background->Ysize);
    const Picture part = made([&](VipsImage** out) {
        return vips_crop(background.get(), out, (background->Xsize - cut) / 2, (background->Ysize - cut) / 2, cut, cut,
                         nullptr);
    });
    const Picture screenshot = loadWithAlpha(job, "screenshot.png");
    const Picture frame = load(job, "frame.png");
    const Picture glare = load(job, "glare.png");
    const Picture picture = composed(part.get(), screenshot.get(), frame.get(), glare.get(), job.quad, job.side,
                                     /*arePremultiplied=*/false);
    const Picture opaque = made([&](VipsImage** out) { return vips_flatten(picture.get(), out, nullptr); });
    const Picture bytes = made([&](VipsImage** out) { return vips_cast_uchar(opaque.get(), out, nullptr); });
    check(vips_pngsave(bytes.get(), job.output.c_str(), "compression", 1, nullptr));
}

} // namespace quillomat::benchmarks
