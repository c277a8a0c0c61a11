#include "cli/Commands.h"
#include "cli/StandardStreams.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/RecordingFile.h"

#include <algorithm>
#include <chrono>

namespace quillomat {

namespace {

constexpr std::uint64_t mostFileBytes = std::uint64_t{1} << 30;

Result<Recording> openRecording(const GlobalOptions& options, FileManager& files, const std::string& name) {
    const auto bytes = name == "-" ? readStandardInput(mostFileBytes) : files.read(name, mostFileBytes);
    if (!bytes) {
        return Failure{bytes.reason()};
    }
    ImageLimits limits;
    limits.pixels = std::min(limits.pixels, options.memory / 4);
    return readRecordingFile(*bytes, limits);
}

/// Why one of the recording's pictures, or of those inside them, has no pixels.
std::string failureIn(const Recording& recording) {
    for (const LayerDraw& draw : recording.draws()) {
        if (!draw.picture) {
            continue;
        }
        const Recording* inner = draw.picture.source()->recording();
        if (auto why = inner != nullptr ? failureIn(*inner) : draw.picture.source()->failure(); !why.empty()) {
            return why;
        }
    }
    return {};
}

} // namespace

ExitStatus runReplay(const GlobalOptions& options, const ReplayJob& job) {
    if (options.json && job.output == "-") {
        return failUsage("replay", "--json and -o - both want standard output");
    }
    const auto start = std::chrono::steady_clock::now();
    SystemFileManager files;
    const std::string shownName = job.recording == "-" ? "standard input" : job.recording;
    auto recording = openRecording(options, files, job.recording);
    if (!recording) {
        return fail(shownName, recording.reason());
    }
    const Image picture = imageOfRecording(*recording);
    const auto png = encodePng(picture, job.best ? PngEffort::best : PngEffort::fast);
    if (!png) {
        return fail(shownName, png.reason());
    }
    if (const std::string why = failureIn(*recording); !why.empty()) {
        return fail(shownName, "a picture: " + why);
    }
    const Status written = job.output == "-" ? writeStandardOutput(*png) : writeOutputFile(files, job.output, *png);
    if (!written) {
        return fail(job.output == "-" ? "standard output" : job.output, written.reason());
    }
    if (options.json) {
        const auto duration = std::chrono::steady_clock::now() - start;
        printJson(
            Value::object({{"output", Value::string(job.output)},
                           {"width", Value::integer(picture.pixelSize().width)},
                           {"height", Value::integer(picture.pixelSize().height)},
                           {"milliseconds",
                            Value::integer(std::chrono::duration_cast<std::chrono::milliseconds>(duration).count())}}));
    }
    return ExitStatus::done;
}

} // namespace quillomat
