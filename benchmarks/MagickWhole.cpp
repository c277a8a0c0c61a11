#include "MagickPeer.h"
#include "WholeJob.h"

#include <algorithm>

namespace quillomat::benchmarks {

void doWholeJob(const WholeJob& job) {
    Magick::InitializeMagick(nullptr);
    Magick::ResourceLimits::thread(static_cast<Magick::MagickSizeType>(job.threads));
    Magick::Image background(job.path("background.jpg"));
    const std::size_t cut = std::min(background.columns(), background.rows());
    background.crop(Magick::Geometry(cut, cut, static_cast<ssize_t>((background.columns() - cut) / 2),
                                     static_cast<ssize_t>((background.rows() - cut) / 2)));
    background.repage();
    const Magick::Image screenshot(job.path("screenshot.png"));
    const Magick::Image frame(job.path("frame.png"));
    const Magick::Image glare(job.path("glare.png"));
    magick::compose(background, screenshot, frame, glare, job.quad, job.side);
    background.quality(15); // deflate's level 1 with filters chosen for each row
    background.write("PNG24:" + job.output);
}

} // namespace quillomat::benchmarks
