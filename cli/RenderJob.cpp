#include "cli/RenderJob.h"

#include "app/Application.h"
#include "catalogue/CatalogueDocument.h"
#include "cli/Messages.h"
#include "cli/RenderMemory.h"
#include "cli/StandardStreams.h"
#include "editor/EditingViewController.h"
#include "editor/MockupDefinition.h"
#include "hosts/desktop/FolderPhotoLibrary.h"
#include "hosts/desktop/UserFolders.h"
#include "platform/graphics/ImageFile.h"
#include "platform/graphics/PngWriter.h"
#include "platform/graphics/RecordingFile.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <thread>

namespace quillomat {

namespace {

using std::chrono::steady_clock;

/// The pictures a job brings, named for messages.
struct Inputs {
    std::vector<Image> screenshots;
    Image background;                                  // cut already
    PixelRect crop;                                    // what was kept of it
    std::vector<std::pair<std::string, Image>> opened; // name and whole picture
};

std::string mebibytes(std::uint64_t bytes) {
    constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;
    return std::to_string((bytes + mebibyte - 1) / mebibyte) + " MiB";
}

Result<Image> openPicture(World& world, const std::string& name, Inputs& inputs) {
    auto opened = [&]() -> Result<Image> {
        if (name != "-") {
            return imageFromFile(world.files(), name, world.platform().imageLimits);
        }
        auto bytes = readStandardInput(world.platform().imageLimits.fileBytes);
        if (!bytes) {
            return Failure{bytes.reason()};
        }
        return imageFromBytes(std::move(bytes).value(), world.platform().imageLimits);
    }();
    const std::string shownName = name == "-" ? "standard input" : name;
    if (!opened) {
        return Failure{shownName + ": " + opened.reason()};
    }
    inputs.opened.emplace_back(shownName, *opened);
    return opened;
}

/// Why a picture of that name cannot be shown, where the application looks for it.
std::string whyNoPicture(World& world, const std::string& name) {
    auto path = world.platform().bundle.pathForImageNamed(name);
    if (!path) {
        path = CatalogueDocument(world.platform()).pathOfDocument(name);
    }
    if (!path) {
        return name + " is missing";
    }
    const auto image = imageFromFile(world.files(), *path, world.platform().imageLimits);
    return name + ": " + (image ? std::string("cannot be shown") : image.reason());
}

/// What the mockup cannot use is an error, not a silence.
Status checkJob(World& world, const RenderJob& job, const MockupDefinition& definition,
                const EditingViewController& editor) {
    const std::size_t screens = definition.hasSecondScreen() ? 2 : 1;
    if (job.screenshots.size() != screens) {
        return Failure{job.mockup + ": takes " + (screens == 2 ? "two screenshots" : "one screenshot") + ", not " +
                       std::to_string(job.screenshots.size())};
    }
    if (job.background && definition.hasCreator()) {
        return Failure{job.mockup + ": an imported mockup with an author takes no background"};
    }
    if (job.glare && definition.hasCreator()) {
        return Failure{job.mockup + ": an imported mockup with an author takes no glare"};
    }
    if (!editor.phone()->image()) {
        return Failure{job.mockup + ": its frame picture " + whyNoPicture(world, lookupNameOfMockup(job.mockup))};
    }
    return {};
}

Status checkCanvas(const RenderJob& job, Size canvas) {
    const ImageLimits announced;
    if (canvas.width < 1 || canvas.height < 1) {
        return Failure{job.mockup + ": its canvas has no extent"};
    }
    if (canvas.width > announced.side || canvas.height > announced.side ||
        canvas.width * canvas.height > static_cast<double>(announced.pixels)) {
        return Failure{job.mockup + ": its canvas is over the limit"};
    }
    return {};
}

Result<Inputs> openInputs(World& world, const RenderJob& job, PixelSize canvas) {
    Inputs inputs;
    for (const auto& name : job.screenshots) {
        auto opened = openPicture(world, name, inputs);
        if (!opened) {
            return Failure{opened.reason()};
        }
        inputs.screenshots.push_back(*opened);
    }
    if (!job.background) {
        return inputs;
    }
    const auto opened = openPicture(world, *job.background, inputs);
    if (!opened) {
        return Failure{opened.reason()};
    }
    const PixelSize size = opened->pixelSize();
    const PixelRect crop = job.crop.value_or(centredCrop(size, canvas));
    if (!liesInside(crop, size)) {
        return Failure{*job.background + ": the crop does not lie inside its " + std::to_string(size.width) + " x " +
                       std::to_string(size.height) + " pixels"};
    }
    // A cut made by hand may be rounded to whole pixels: one per cent off is no distortion anybody meant.
    const double stretch =
        (static_cast<double>(crop.width) * canvas.height) / (static_cast<double>(crop.height) * canvas.width);
    if (job.crop && std::abs(std::log(stretch)) > 0.01) {
        warn(*job.background, "the crop has another shape than the canvas and is stretched to it");
    }
    inputs.crop = crop;
    inputs.background = croppedImage(*opened, crop);
    return inputs;
}

/// Switches the glare on; a mockup without a glare picture shows nothing then.
Status pressGlare(const RenderJob& job, EditingViewController& editor) {
    if (!job.glare) {
        return {};
    }
    editor.addGlareButton()->press();
    return editor.overlay()->image() ? Status() : Status(Failure{job.mockup + ": has no glare picture"});
}

RenderPlan::Picture plannedPicture(const Image& image) {
    RenderPlan::Picture planned;
    if (const SharedDocument document = image ? image.source()->document() : nullptr) {
        planned.documentBytes = document->size();
        // It was read before, within its limits.
        if (const auto header = readImageHeader(*document)) {
            planned.header = *header;
        }
    }
    return planned;
}

PixelSize pixelsOf(Size size) {
    const auto side = [](double length) {
        return static_cast<int>(std::clamp(length, 0.0, static_cast<double>(ImageLimits{}.side)));
    };
    return {side(std::ceil(size.width)), side(std::ceil(size.height))};
}

Size boxOf(const Quad& quad) {
    return boundingBoxForQuadTR(quad.topRight, quad.topLeft, quad.bottomLeft, quad.bottomRight).size;
}

/// What the first screen is flattened into. At a scale of 1 that is drawn at once, in its place.
PixelSize flattenedSize(Size box, double screenScale) {
    const bool isHalved = isFlattenedAtHalfSize(box);
    if (!isHalved && screenScale == 1) {
        return {};
    }
    const double scale = screenScale * (isHalved ? 0.5 : 1);
    return pixelsOf({box.width * scale, box.height * scale});
}

RenderPlan planOf(World& world, const RenderJob& job, const MockupDefinition& definition, const Inputs& inputs,
                  const EditingViewController& editor) {
    RenderPlan plan;
    plan.canvas = pixelsOf(definition.canvasSize());
    for (std::size_t i = 0; i < inputs.screenshots.size(); ++i) {
        const Size box = boxOf(definition.storedCorners("F", i == 0 ? "" : "2"));
        plan.screens.push_back({plannedPicture(inputs.screenshots[i]), pixelsOf(box)});
    }
    plan.intermediate = flattenedSize(boxOf(definition.storedCorners("F", "")), world.options().screenScale);
    if (inputs.background) {
        const Size preview = editor.background()->bounds().size;
        plan.background = {plannedPicture(inputs.opened.back().second), inputs.crop,
                           job.blur ? pixelsOf(preview) : plan.canvas, job.blur};
    }
    plan.overlays.push_back({plannedPicture(editor.phone()->image()), pixelsOf(definition.frameRect().size)});
    if (job.glare) {
        plan.overlays.push_back({plannedPicture(editor.overlay()->image()), pixelsOf(definition.glareRect().size)});
    }
    plan.smallestFile = job.best;
    plan.keepsRecording = job.dump.has_value();
    plan.threads = static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
    return plan;
}

Status checkMemory(World& world, const RenderJob& job, const RenderPlan& plan) {
    const std::uint64_t bytes = mostBytesOfRender(plan);
    const std::uint64_t ceiling = world.options().memory;
    if (bytes > ceiling) {
        return Failure{job.mockup + ": needs up to " + mebibytes(bytes) + ", over the ceiling of " +
                       mebibytes(ceiling) + " (see --memory)"};
    }
    return {};
}

/// The rest of the user's part: picks, the answer about the blur, save.
void playSession(EditingViewController& editor, HeadlessHost& host, const RenderJob& job, const Inputs& inputs) {
    // The background comes first: the first screenshot of an imported mockup composes at once.
    if (inputs.background) {
        editor.addBGButton()->press();
        host.pick({inputs.opened.back().second, inputs.background});
        host.advance(std::chrono::seconds(1));
        host.press(job.blur ? "Yes" : "No");
    }
    editor.addLeftButton()->press();
    host.pick({inputs.screenshots.front(), {}});
    if (inputs.screenshots.size() > 1) {
        editor.addRightButton()->press();
        host.pick({inputs.screenshots.back(), {}});
    }
    host.advance(std::chrono::seconds(1));
    editor.saveButton()->press();
}

/// Pictures are decoded when first drawn, so what is wrong with their pixels shows only now.
Status checkDecoded(const EditingViewController& editor, const RenderJob& job, const Inputs& inputs) {
    for (const auto& [name, image] : inputs.opened) {
        if (const auto why = image.source()->failure(); !why.empty()) {
            return Failure{name + ": " + why};
        }
    }
    if (const auto why = editor.compositionProblem(); !why.empty()) {
        return Failure{job.mockup + ": " + why};
    }
    return {};
}

Status dump(World& world, const std::string& path, const Image& composed) {
    const Recording* recording = composed ? composed.source()->recording() : nullptr;
    if (recording == nullptr) {
        return Failure{"nothing was recorded"};
    }
    const auto bytes = writeRecordingFile(*recording);
    return bytes ? writeOutputFile(world.files(), path, *bytes) : Status(Failure{bytes.reason()});
}

Result<std::string> deliver(World& world, const RenderJob& job, const Image& saved) {
    if (!job.output) {
        FolderPhotoLibrary library(picturesDirectory(processEnvironment()), world.files());
        library.writeToSavedPhotosAlbum(saved);
        return library.lastWrite();
    }
    const Status written = [&]() -> Status {
        if (const auto draft = draftOf(saved)) {
            return draft->publish();
        }
        const auto png = pngDocument(saved);
        if (!png) {
            return Failure{png.reason()};
        }
        return *job.output == "-" ? writeStandardOutput(**png) : writeOutputFile(world.files(), *job.output, **png);
    }();
    if (!written) {
        return Failure{(*job.output == "-" ? std::string("standard output") : *job.output) + ": " + written.reason()};
    }
    return *job.output;
}

} // namespace

Result<RenderReport> renderMockup(World& world, const RenderJob& job) {
    const auto start = steady_clock::now();
    world.platform().savedEffort = job.best ? PngEffort::best : PngEffort::fast;
    if (job.output && *job.output != "-") {
        world.platform().savedDraft = [output = *job.output] { return beginOutputFile(output); };
    }
    Image composed;
    if (job.dump) {
        world.platform().composed = [&composed](const Image& picture) { composed = picture; };
    }
    Application application(world.platform());
    const auto editor =
        std::dynamic_pointer_cast<EditingViewController>(application.storyboard().instantiate("editingViewController"));
    editor->setImageInfo(job.mockup);
    NavigationController navigation(editor);
    editor->view();
    HeadlessHost host(navigation, world.queue());

    const MockupDefinition definition(editor->editInfo()[job.mockup]);
    const Size canvas = definition.canvasSize();
    if (const auto checked = checkCanvas(job, canvas); !checked) {
        return Failure{checked.reason()};
    }
    if (const auto checked = checkJob(world, job, definition, *editor); !checked) {
        return Failure{checked.reason()};
    }
    const PixelSize shape{static_cast<int>(canvas.width), static_cast<int>(canvas.height)};
    const auto inputs = openInputs(world, job, shape);
    if (!inputs) {
        return Failure{inputs.reason()};
    }
    if (const auto pressed = pressGlare(job, *editor); !pressed) {
        return Failure{pressed.reason()};
    }
    if (const auto checked = checkMemory(world, job, planOf(world, job, definition, *inputs, *editor)); !checked) {
        return Failure{checked.reason()};
    }
    playSession(*editor, host, job, *inputs);
    if (const auto checked = checkDecoded(*editor, job, *inputs); !checked) {
        return Failure{checked.reason()};
    }
    const Image& saved = world.photos().saved();
    if (!saved) {
        return Failure{job.mockup + ": no picture was composed"};
    }
    if (const auto dumped = job.dump ? dump(world, *job.dump, composed) : Status(); !dumped) {
        return Failure{*job.dump + ": " + dumped.reason()};
    }
    const auto output = deliver(world, job, saved);
    if (!output) {
        return Failure{output.reason()};
    }
    return RenderReport{*output, saved.pixelSize(),
                        std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now() - start)};
}

} // namespace quillomat
